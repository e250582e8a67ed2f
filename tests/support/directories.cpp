// Paths of the source tree, in this one file: all others compile to the same objects in every
// checkout.
#include "support/directories.h"

const char* const kMembershipDirectory = MEMBERSHIP_DIRECTORY;
