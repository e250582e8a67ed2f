/* membership_files.h - the files of membership functions that a classification needs. */
#ifndef SCAN_CLASSES_MEMBERSHIP_FILES_H
#define SCAN_CLASSES_MEMBERSHIP_FILES_H

#include <string>

namespace scan {

/* A directory as the library takes it: with its trailing separator. Throws std::runtime_error when
 * the name is too long for the library. */
std::string withSeparator(std::string directory);

/* Throws std::runtime_error naming the first file of directory that is missing or malformed for the
 * inputs of mask; with allClasses sea and turbine clutter have theirs too. */
void requireMembershipFiles(const std::string& directory, int mask, bool allClasses = false);

}  // namespace scan

#endif
