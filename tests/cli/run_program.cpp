// The program as a user runs it. The only file that holds its path.
#include "run_program.h"

#include <sys/wait.h>

#include <cstdio>

const char* const kProgram = PROGRAM;

Outcome runProgram(const std::string& arguments) {
    return runCommand(std::string(kProgram) + " " + arguments);
}

Outcome runCommand(const std::string& command) {
    FILE* pipe = popen(("exec 2>&1 </dev/null; " + command).c_str(), "r");
    Outcome outcome{-1, ""};
    char buffer[4096];
    while (std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe)) {
        outcome.out.append(buffer, count);
    }
    const int status = pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}
