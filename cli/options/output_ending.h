/* output_ending.h - names that promise another form than the file would have. */
#ifndef CLI_OPTIONS_OUTPUT_ENDING_H
#define CLI_OPTIONS_OUTPUT_ENDING_H

#include <initializer_list>
#include <string>

namespace cli {

/*
 * For commands that write a field record file unless the ending is one of theirs: throws
 * CLI::ValidationError for endings of other formats. An empty path passes.
 */
void requireEnding(const std::string& option, const std::string& path,
                   std::initializer_list<const char*> theirs);

}  // namespace cli

#endif
