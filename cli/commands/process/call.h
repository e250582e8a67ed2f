/* call.h - one call of the command `process`. */
#ifndef CLI_COMMANDS_PROCESS_CALL_H
#define CLI_COMMANDS_PROCESS_CALL_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "options/classify_options.h"
#include "options/input_file.h"

namespace cli {

struct ProcessCall {
    std::string input, config, output, points, prefix, picture, checked;
    ClassifyArguments how;
    std::vector<std::string> plot;
    std::optional<int> what, sweep;
    std::optional<double> freezingLevelM;
    std::uint32_t seed = 1;
    bool certainty = false, printConfig = false, quiet = false, json = false;
    scan::ReadOptions read;
};

/* The picture's name: the given one, or one made from the output's or the input's; empty when no
 * picture is wanted. */
std::string picturePath(const ProcessCall& call, const InputFile& input);

}  // namespace cli

#endif
