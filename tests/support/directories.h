/* directories.h - where the tests and the benches find the membership functions. */
#ifndef TESTS_SUPPORT_DIRECTORIES_H
#define TESTS_SUPPORT_DIRECTORIES_H

/* The packaged set, with the separator at its end. */
extern const char* const kMembershipDirectory;

#endif
