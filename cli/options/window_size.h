/* window_size.h - windows as options name them: "5x3" is 5 gates by 3 rays. */
#ifndef CLI_OPTIONS_WINDOW_SIZE_H
#define CLI_OPTIONS_WINDOW_SIZE_H

#include <string>

namespace cli {

struct WindowSize {
    int gates, rays;
};

/* Both sizes are odd, 1 to largest, and not both are 1. Throws CLI::ValidationError that names
 * option. */
WindowSize parseWindow(const std::string& option, const std::string& text, int largest);

}  // namespace cli

#endif
