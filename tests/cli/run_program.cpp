// The program as a user runs it. The only file that holds its path.
#include "run_program.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <algorithm>
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

void expectRefusals(const std::vector<Refusal>& calls) {
    for (const Refusal& call : calls) {
        SCOPED_TRACE(call.arguments);
        const Outcome outcome = runProgram(call.arguments);
        EXPECT_EQ(outcome.code, call.code);
        EXPECT_THAT(outcome.out, testing::StartsWith("clutterclassifier: "));
        EXPECT_THAT(outcome.out, testing::HasSubstr(call.reason));
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    }
}
