/* explain.cpp - the command `explain`. */
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands/commands.h"
#include "commands/explain/gate.h"
#include "commands/explain/report.h"
#include "options/classify_options.h"
#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/selection.h"
#include "report/failure.h"
#include "report/notes.h"
#include "scan/classes/classify_sweep.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier explain scan.uf --at 271.5,32\n"
    "  clutterclassifier explain scan.uf --at 271.5,32 --neighbourhood off --json\n"
    "\n"
    "The contribution of an input is the logarithm of its degree in precipitation over that in\n"
    "clutter. The contributions and the neighbourhood's share add up to the margin; above 0 the\n"
    "gate is precipitation.";

struct ExplainArguments {
    std::string input;
    std::vector<double> at;  // degrees, km
    std::optional<int> sweep;
    ClassifyArguments how;
    scan::ReadOptions read;
    bool allClasses = false, json = false;
};

Explained explain(const ExplainArguments& arguments, const InputFile& input,
                  const scan::ClassifyOptions& options) {
    const scan::Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kErrors);
    const scan::Sweep& sweep = findSweep(scan, arguments.sweep);
    const Gate gate = gateAt(sweep, arguments.at.at(0), arguments.at.at(1));
    const scan::ExplainedGate why = scan::explainGate(scan, sweep, options, gate.ray, gate.number);
    return {input.name(), sweep.number, gate, why.plan.notes, why.explanation};
}

void runExplain(const ExplainArguments& arguments) {
    scan::ClassifyOptions options = classifyOptionsFrom(arguments.how);
    options.allClasses = arguments.allClasses;
    const InputFile input(arguments.input);
    requireLayoutUsed(arguments.read, input);
    options.membership = membershipDirectory(arguments.how.membership);
    naming(input.name(), [&] {
        const Explained explained = explain(arguments, input, options);
        (arguments.json ? printExplanationJson : printExplanation)(explained);
    });
}

}  // namespace

void addExplainCommand(CLI::App& app) {
    auto arguments = std::make_shared<ExplainArguments>();
    CLI::App* command = app.add_subcommand("explain", "Show why a gate has its class");
    command->footer(kFooter);
    command->add_option("INPUT", arguments->input, kInputHelp)->required();
    command
        ->add_option("--at", arguments->at,
                     "AZIMUTH,RANGE of the gate in degrees and km; in a range-height scan "
                     "ELEVATION,RANGE")
        ->delimiter(',')
        ->expected(2)
        ->check(isFinite)
        ->required();
    command->add_option("--sweep", arguments->sweep, "Number of the sweep (default: the first)");
    addInputOptions(*command, arguments->how);
    addFieldOptions(*command, arguments->how);
    command->add_flag("--all-classes", arguments->allClasses,
                      "Sea and wind-turbine clutter too, as classify --classes all");
    addLayoutOption(*command, arguments->read);
    command->add_flag("--json", arguments->json, "Print a JSON object");
    command->callback([arguments] { runExplain(*arguments); });
}

}  // namespace cli
