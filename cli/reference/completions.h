/* completions.h - completion of the command line for three shells. */
#ifndef CLI_REFERENCE_COMPLETIONS_H
#define CLI_REFERENCE_COMPLETIONS_H

#include <string>
#include <vector>

#include "reference/command_list.h"

namespace cli {

std::string bashCompletion(const std::vector<CommandText>& commands);
std::string zshCompletion(const std::vector<CommandText>& commands);
std::string fishCompletion(const std::vector<CommandText>& commands);

}  // namespace cli

#endif
