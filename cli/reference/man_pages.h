/* man_pages.h - manual pages of the program and of each command. */
#ifndef CLI_REFERENCE_MAN_PAGES_H
#define CLI_REFERENCE_MAN_PAGES_H

#include <string>
#include <vector>

#include "reference/command_list.h"

namespace cli {

/* "clutterclassifier-membership-check". */
std::string pageName(const CommandText& command);

/* The page of one command in the language of man(7). */
std::string manPage(const CommandText& command, const std::vector<CommandText>& all);

}  // namespace cli

#endif
