/* program.cpp - the whole command line: what the program says about itself, and its commands. */
#include <CLI/CLI.hpp>

#include "commands/commands.h"

namespace cli {
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

}  // namespace

void addProgram(CLI::App& app) {
    app.description(
        "Tells precipitation from ground clutter and noise in dual-polarisation weather radar "
        "scans.");
    app.name("clutterclassifier");
    app.set_version_flag("--version", "clutterclassifier " CLUTTERCLASSIFIER_VERSION);
    app.require_subcommand(0, 1);
    app.footer(kFooter);
    addClassifyCommand(app);
    addCleanCommand(app);
    addExplainCommand(app);
    addInfoCommand(app);
    addPlotCommand(app);
    addProcessCommand(app);
    addExtractCommand(app);
    addExportCommand(app);
    addConvertCommand(app);
    addRepackCommand(app);
    addMembershipCommand(app);
    addDemoCommand(app);
    addViewCommand(app);
    addWatchCommand(app);
}

}  // namespace cli
