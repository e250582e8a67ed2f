/*
 * membership_dir.h - where the membership functions are.
 */
#ifndef CLI_OPTIONS_MEMBERSHIP_DIR_H
#define CLI_OPTIONS_MEMBERSHIP_DIR_H

#include <string>

namespace cli {

/*
 * The directory of the membership files, with its trailing separator: the first of
 *   1. override, when not empty;
 *   2. the environment variable CLUTTERCLASSIFIER_MEMBERSHIP, when not empty;
 *   3. the installed set, relative to the program's own file;
 *   4. the source tree's set, for a program that was built but not installed.
 * Only 3 and 4 must exist to be chosen: what the user names is taken as it is. Throws
 * std::runtime_error when there is none, or when the directory's name is too long for the library.
 */
std::string membershipDirectory(const std::string& override);

}  // namespace cli

#endif
