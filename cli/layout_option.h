/* layout_option.h - the option --layout of every command that reads polar data files. */
#ifndef CLI_LAYOUT_OPTION_H
#define CLI_LAYOUT_OPTION_H

#include <CLI/CLI.hpp>

#include "read_scan.h"

namespace cli {

inline CLI::Option* addLayoutOption(CLI::App& command, scan::ReadOptions& options) {
    return command
        .add_option("--layout", options.polarLayout,
                    "How the gates of a polar data file are packed: 252, 260 or 280 (products 2211 "
                    "and 2212)")
        ->check(CLI::IsMember({252, 260, 280}));
}

}  // namespace cli

#endif
