/* terminal.h - text from outside, made safe for a terminal. */
#ifndef CLI_REPORT_TERMINAL_H
#define CLI_REPORT_TERMINAL_H

#include <string>

namespace cli {

/*
 * Names of files and fields may hold any bytes, and a terminal obeys some of them. Each control
 * character, and each byte that is no UTF-8, becomes '?'; all other text stays as it is.
 */
std::string forTerminal(const std::string& text);

}  // namespace cli

#endif
