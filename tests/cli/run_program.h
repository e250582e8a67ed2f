/* run_program.h - the program as a user runs it. */
#ifndef CLUTTER_TESTS_CLI_RUN_PROGRAM_H
#define CLUTTER_TESTS_CLI_RUN_PROGRAM_H

#include <string>

/* The path of the program under test. */
extern const char* const kProgram;

struct Outcome {
    int code;
    std::string out; /* both streams */
};
Outcome runProgram(const std::string& arguments);
Outcome runCommand(const std::string& command); /* of a shell */

#endif
