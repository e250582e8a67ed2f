/* did_you_mean.h - the command or option that a mistyped one was probably meant to be. */
#ifndef CLI_OPTIONS_DID_YOU_MEAN_H
#define CLI_OPTIONS_DID_YOU_MEAN_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace cli {

/* The name with the fewest letters to change, add, leave out or swap; "" where all differ too much
 * from the word: in more than a third of its letters. */
std::string closestName(const std::string& word, const std::vector<std::string>& names);

/* " - did you mean ...?" for the first word of a call that is unknown; "" where nothing is close.
 */
std::string didYouMean(const CLI::App& app);

}  // namespace cli

#endif
