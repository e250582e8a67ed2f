/* exit_code.h - the program's exit codes. */
#ifndef CLI_REPORT_EXIT_CODE_H
#define CLI_REPORT_EXIT_CODE_H

#include <string>

namespace cli {

constexpr int kExitFailure = 1; /* a file could not be read, classified or written */
constexpr int kExitUsage = 2;   /* the command line makes no sense */

/* Ends a command that has reported its errors already. */
struct CommandFailed {
    int code = kExitFailure;
};

/* One line on standard error: "clutterclassifier: <file>: <reason>". */
void reportError(const std::string& file, const std::string& reason);

}  // namespace cli

#endif
