/* process.cpp - the command `process`: its options, and what makes a call of it sensible. */
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>

#include "commands/commands.h"
#include "commands/process/call.h"
#include "commands/process/run.h"
#include "commands/process/settings.h"
#include "options/finite_option.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "report/failure.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier process --print-config > settings.txt\n"
    "  clutterclassifier process --check-config settings.txt\n"
    "  clutterclassifier process scan.uf --config settings.txt -o processed.uf\n"
    "  clutterclassifier process scan.uf --what 31 --freezing-level 2400 --plot Zh,R,Ah\n"
    "  clutterclassifier process scan.uf --points gauges.txt --prefix samples/gauges\n"
    "\n"
    "Stages, added up: 1 classification, 2 offset of ZDR, 4 smoothing, 8 attenuation, 16 rain\n"
    "rate, 32 reflectivity from rain rate, 64 rain rate from reflectivity, 128 blanking.";

/* No result may replace a file that is read. */
void requireInputsKept(const ProcessCall& call, const std::string& picture) {
    for (const std::string& input : {call.input, call.config, call.points}) {
        requireOther("--output", call.output, input);
        requireOther("--picture", picture, input);
    }
}

void requireSoundCall(const ProcessCall& call, const InputFile& input) {
    if (call.points.empty() != call.prefix.empty()) {
        throw CLI::ValidationError("--points", "goes with --prefix");
    }
    if (call.certainty && call.output.empty()) {
        throw CLI::ValidationError("--certainty", "needs an output, -o");
    }
    if (!call.picture.empty() && call.plot.empty()) {
        throw CLI::ValidationError("--picture", "needs the fields, --plot");
    }
    const std::string picture = picturePath(call, input);
    requireInputsKept(call, picture);
    requireEnding("--output", call.output, {".uf"});
    requireLayoutUsed(call.read, input);
    if (!picture.empty()) {
        requirePictureEnding("--picture", picture);
        if (picture == call.output) {
            throw CLI::ValidationError("two results would be written to " + picture);
        }
    }
}

void runProcess(const ProcessCall& call) {
    if (call.printConfig) {
        return printConfiguration();
    }
    if (!call.checked.empty()) {
        return checkConfiguration(call.checked);
    }
    if (call.input.empty()) {
        throw CLI::RequiredError("INPUT");
    }
    const InputFile input(call.input);
    requireSoundCall(call, input);
    ProcessRun run(call, input);
    naming(input.name(), [&] { run.perform(); });
}

void addStageOptions(CLI::App& command, ProcessCall& call) {
    command.add_option("--config", call.config,
                       "File of settings (default: those of --print-config)");
    command
        .add_option("--what", call.what, "Stages (default: WHAT2DO of the settings, else all, 255)")
        ->check(CLI::Range(0, scan::kAllStages));
    command
        .add_option("--freezing-level", call.freezingLevelM,
                    "Height of the freezing level above the antenna, m (default: of the settings)")
        ->check(isFinite);
    command.add_option("--seed", call.seed,
                       "Seed of the random search for attenuation coefficients (default: 1)");
    command.add_flag("--print-config", call.printConfig,
                     "Print an example of the settings; explanations go to standard error");
    command.add_option("--check-config", call.checked, "Report problems in a settings file");
}

void addOutputOptions(CLI::App& command, ProcessCall& call) {
    command.add_option("-o,--output", call.output,
                       "Write the processed fields: .uf Universal Format, anything else a field "
                       "record file; of a volume one file for each sweep");
    command.add_flag("--certainty", call.certainty,
                     "Also write the probability of precipitation (PR) and the margin (MA)");
    command.add_option("--points", call.points,
                       "Text file of points, range (m) and azimuth (degrees) on each line");
    command.add_option("--prefix", call.prefix,
                       "Append the samples at the points to PREFIX_zhh.dat, PREFIX_R.dat, ...");
    command
        .add_option("--plot", call.plot,
                    "Draw fields after processing: Zh, R, Ah, CCl, ...; several give panels")
        ->delimiter(',');
    command.add_option("--picture", call.picture,
                       "Picture: FILE.png, FILE.svg or FILE.pdf (default: named after OUT, else "
                       "INPUT_processed.png in the working directory)");
    command.add_flag("--json", call.json, "Print one JSON object for the file");
    command.add_flag("-q,--quiet", call.quiet, "Print errors only");
}

/* For options that make the command do something else. */
void requireAlone(const CLI::App& command, const std::string& name) {
    if (command.count(name) == 0) {
        return;
    }
    for (const CLI::Option* option : command.get_options()) {
        if (option->count() > 0 && !option->check_name(name)) {
            throw CLI::ValidationError(name, "cannot be combined with " + option->get_name());
        }
    }
}

}  // namespace

std::string picturePath(const ProcessCall& call, const InputFile& input) {
    if (call.plot.empty()) {
        return "";
    }
    if (!call.picture.empty()) {
        return call.picture;
    }
    if (!call.output.empty()) {
        return std::filesystem::path(call.output).replace_extension(".png").string();
    }
    return input.stem() + "_processed.png";
}

void addProcessCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "process", "Classify, smooth, correct attenuation and estimate rain by settings");
    command->footer(kFooter);
    const auto call = std::make_shared<ProcessCall>();
    command->add_option("INPUT", call->input, kInputHelp);
    addStageOptions(*command, *call);
    addFieldOptions(*command, call->how);
    addNeighbourhoodOption(*command, call->how);
    command->add_option("--sweep", call->sweep, "Only the sweep of this number");
    addLayoutOption(*command, call->read);
    addOutputOptions(*command, *call);
    command->callback([call, command] {
        requireAlone(*command, "--print-config");
        requireAlone(*command, "--check-config");
        runProcess(*call);
    });
}

}  // namespace cli
