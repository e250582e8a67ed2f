/* run_program.h - the program as a user runs it. */
#ifndef CLUTTER_TESTS_CLI_RUN_PROGRAM_H
#define CLUTTER_TESTS_CLI_RUN_PROGRAM_H

#include <string>
#include <vector>

/* The path of the program under test. */
extern const char* const kProgram;

struct Outcome {
    int code;
    std::string out;  // both streams
};
Outcome runProgram(const std::string& arguments);
Outcome runCommand(const std::string& command);  // of a shell

struct Refusal {
    std::string arguments;
    int code;
    std::string reason;
};
/* Each call ends with its code, and one line that begins with the program's name and says why. */
void expectRefusals(const std::vector<Refusal>& calls);

#endif
