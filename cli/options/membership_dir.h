/* membership_dir.h - where the membership functions are. */
#ifndef CLI_OPTIONS_MEMBERSHIP_DIR_H
#define CLI_OPTIONS_MEMBERSHIP_DIR_H

#include <filesystem>
#include <string>

namespace cli {

/*
 * The directory of the membership files, with its trailing separator: the first of
 *   1. override, when not empty;
 *   2. the environment variable CLUTTERCLASSIFIER_MEMBERSHIP, when not empty;
 *   3. the set that came with the program, relative to the program's own file.
 * Only the last must exist to be chosen: a directory that the user names is used as it is. Throws
 * std::runtime_error when there is none, or when the directory's name is too long for the library.
 */
std::string membershipDirectory(const std::string& override);

/* Where the files that came with the program are. */
std::filesystem::path shippedDirectory();

}  // namespace cli

#endif
