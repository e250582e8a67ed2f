/* settings.h - the settings of `process`: the file of settings and the options that override it. */
#ifndef CLI_COMMANDS_PROCESS_SETTINGS_H
#define CLI_COMMANDS_PROCESS_SETTINGS_H

#include <string>

#include "commands/process/call.h"
#include "scan/process/process_sweep.h"

namespace cli {

/* Reports what is wrong with the settings on standard error. Throws FileError when they cannot be
 * used, CLI::ValidationError for an option. */
scan::ProcessOptions processOptionsFrom(const ProcessCall& call);

/* The pairs go to standard output, which may become a file; explanations to standard error. */
void printConfiguration();

/* Throws CommandFailed when anything is wrong with the file. */
void checkConfiguration(const std::string& path);

}  // namespace cli

#endif
