/* check.h - whether a directory of membership functions can be used, and what it will not do. */
#ifndef SCAN_MEMBERSHIP_CHECK_H
#define SCAN_MEMBERSHIP_CHECK_H

#include <string>
#include <vector>

#include "scan/membership/table_file.h"

namespace scan {

struct MembershipCheck {
    int files = 0;
    std::vector<Finding> findings;  // errors and warnings, by file and line
    int errors() const;
};

/*
 * Reads every membership file of a directory. Errors: what cannot be parsed, abscissas that
 * descend, degrees outside 0..1, a class of a quantity without the others that it is compared with,
 * pairs that do not end in one degree (a missing value would decide), no files at all. Warnings:
 * degrees of 0, pairs that never decide, names that the library does not look for. Throws
 * std::runtime_error when the directory cannot be read.
 */
MembershipCheck checkMembership(const std::string& directory);

}  // namespace scan

#endif
