/* layout_option.h - the option --layout of every command that reads polar data files. */
#ifndef CLI_OPTIONS_LAYOUT_OPTION_H
#define CLI_OPTIONS_LAYOUT_OPTION_H

#include <CLI/CLI.hpp>
#include <vector>

#include "options/input_file.h"
#include "scan/formats/read_scan.h"

namespace cli {

CLI::Option* addLayoutOption(CLI::App& command, scan::ReadOptions& options);

/* Throws CLI::ValidationError when a layout is given and no input is a polar data file. */
void requireLayoutUsed(const scan::ReadOptions& options, const std::vector<InputFile>& inputs);
void requireLayoutUsed(const scan::ReadOptions& options, const InputFile& input);

}  // namespace cli

#endif
