/*
 * clutterclassifier - tells precipitation from ground clutter and noise in radar scans.
 */
#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

#include "commands/commands.h"
#include "report/failure.h"
#include "report/terminal.h"
#include "scan/formats/writing/output_file.h"

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier demo\n"
    "  clutterclassifier info scan.uf\n"
    "  clutterclassifier clean volume.h5 -o rain.h5\n"
    "  clutterclassifier classify scan.uf -o classes.uf --plot classes.png\n"
    "  clutterclassifier explain scan.uf --at 271.5,32\n"
    "  clutterclassifier process scan.uf --config settings.txt -o processed.uf\n"
    "  clutterclassifier plot scan.uf --field DZ -o reflectivity.svg\n"
    "  clutterclassifier extract scan.uf gauges.txt\n"
    "  clutterclassifier export scan.uf --field DZ -o reflectivity.csv\n"
    "\n"
    "Run a command with --help for its options.";

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
    CLI::App app(
        "Tells precipitation from ground clutter and noise in dual-polarisation radar "
        "scans.",
        "clutterclassifier");
    app.set_version_flag("--version", "clutterclassifier " CLUTTERCLASSIFIER_VERSION);
    app.require_subcommand(0, 1);
    app.footer(kFooter);
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "clutterclassifier: " + cli::forTerminal(error.what()) + " (see --help)\n";
    });
    cli::addClassifyCommand(app);
    cli::addCleanCommand(app);
    cli::addExplainCommand(app);
    cli::addInfoCommand(app);
    cli::addPlotCommand(app);
    cli::addProcessCommand(app);
    cli::addExtractCommand(app);
    cli::addExportCommand(app);
    cli::addConvertCommand(app);
    cli::addRepackCommand(app);
    cli::addMembershipCommand(app);
    cli::addDemoCommand(app);
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
