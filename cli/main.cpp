/*
 * clutterclassifier - tells precipitation from ground clutter and noise in radar scans.
 */
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

#include "commands/commands.h"
#include "options/did_you_mean.h"
#include "report/failure.h"
#include "report/terminal.h"
#include "scan/formats/writing/output_file.h"

namespace {

int runCommand(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
        if (app.get_subcommands().empty()) {
            throw CLI::RequiredError::Subcommand(1);
        }
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : cli::kExitUsage;
    } catch (const cli::CommandFailed& failure) {
        return failure.code;
    } catch (const std::exception& error) {
        cli::reportError("", error);
        return cli::kExitFailure;
    }
    return 0;
}

/* Whether everything printed has reached its destination: on a full disk it has not. */
bool flushOutput() {
    std::cout.flush();
    return std::cout.good() && std::fflush(stdout) == 0;
}

}  // namespace

int main(int argc, char** argv) try {
    scan::removeTemporariesWhenInterrupted();
    CLI::App app;
    cli::addProgram(app);
    app.failure_message([](const CLI::App* failed, const CLI::Error& error) {
        return "clutterclassifier: " + cli::forTerminal(error.what() + cli::didYouMean(*failed)) +
               " (see --help)\n";
    });
    const int code = runCommand(app, argc, argv);
    if (!flushOutput() && code == 0) {
        std::fprintf(stderr, "clutterclassifier: cannot write to standard output\n");
        return cli::kExitFailure;
    }
    return code;
} catch (const std::exception& error) {
    cli::reportError("", error);
    return cli::kExitFailure;
}
