/* input_list.h - the files that the inputs of a command mean: files, folders and patterns. */
#ifndef CLI_OPTIONS_INPUT_LIST_H
#define CLI_OPTIONS_INPUT_LIST_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "options/input_file.h"

namespace cli {

constexpr char kInputsHelp[] =
    "Radar files of any format that the library reads; a folder means all files below it, a "
    "pattern such as '2024/*.uf' those that match; - is standard input";

/* The inputs in the given order, the files of a folder or a pattern sorted by name. Files whose
 * names begin with a dot are left out. Throws CLI::ValidationError for a folder or a pattern
 * without any file. */
std::vector<InputFile> inputFiles(const std::vector<std::string>& given);

/* -j N: files that are worked on at a time. */
void addJobsOption(CLI::App& command, int& jobs);

}  // namespace cli

#endif
