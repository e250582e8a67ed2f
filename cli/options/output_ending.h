/* output_ending.h - checks of the names of output files. */
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

/* Throws CLI::ValidationError when path names no picture format. */
void requirePictureEnding(const std::string& option, const std::string& path);

/* Throws CLI::ValidationError, with option, when output and input are one file. */
void requireOther(const std::string& option, const std::string& output, const std::string& input);

}  // namespace cli

#endif
