/* run_program.h - the program as a user runs it. */
#ifndef CLUTTER_TESTS_CLI_RUN_PROGRAM_H
#define CLUTTER_TESTS_CLI_RUN_PROGRAM_H

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct Outcome {
    int code;
    std::string out; /* both streams */
};

inline Outcome runProgram(const std::string& arguments) {
    const std::string command = std::string(PROGRAM) + " " + arguments + " 2>&1 </dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    Outcome outcome{-1, ""};
    char buffer[4096];
    while (size_t count = std::fread(buffer, 1, sizeof buffer, pipe))
        outcome.out.append(buffer, count);
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

#endif
