/* clean.cpp - the command `clean`: a classification whose output is the input without clutter. */
#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>

#include "commands/classify/call.h"
#include "commands/classify/class_codes.h"
#include "commands/classify/jobs.h"
#include "commands/classify/run.h"
#include "commands/commands.h"
#include "options/input_list.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "report/failure.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier clean volume.h5 -o rain.h5\n"
    "  clutterclassifier clean scan.uf -o rain.nc --picture rain.png\n"
    "  clutterclassifier clean *.h5 -o cleaned/ --keep noise\n"
    "  clutterclassifier clean scan.uf -o rain.uf --fields DZ,VR\n"
    "\n"
    "OUT has all fields of the input and the classes. Gates of clutter and noise hold no echo: in\n"
    "every field except those about the signal itself (signal-to-noise ratio, quality index,\n"
    "clutter mask), or in the fields that --fields names. Its ending chooses the format: .uf, "
    ".h5,\n"
    ".nc, .nc4, or a field record file. Where it is that of the input, all else stays as it is.";

struct CleanArguments {
    ClassifyCall call;
    std::string keep;
    std::vector<std::string> fields;
};

/* Precipitation always stays. */
scan::CleanOptions cleanOptionsFrom(const CleanArguments& arguments) {
    std::string kept = "precipitation";
    kept += arguments.keep.empty() ? "" : "," + arguments.keep;
    try {
        return {scan::parseClasses(kept), arguments.fields};
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--keep", error.what());
    }
}

void requireSoundCall(const ClassifyCall& call) {
    if (!isDirectoryName(call.output)) {
        if (!call.format.empty()) {
            throw CLI::ValidationError(
                "--format", "is for an output directory: a file's ending chooses its format");
        }
        requireEnding("--output", call.output, {".uf", ".h5", ".hdf", ".hdf5", ".nc", ".nc4"});
    }
    requireCodesUsed(call);
    if (!call.plot.empty() && !isDirectoryName(call.plot)) {
        requirePictureEnding("--picture", call.plot);
    }
}

void addOutputOptions(CLI::App& command, CleanArguments& arguments) {
    ClassifyCall& call = arguments.call;
    command
        .add_option("-o,--output", call.output,
                    "File to write, or a directory (existing, or ending in /)")
        ->required();
    command
        .add_option("--format", call.format,
                    "Format of the files in an output directory (default: that of the input)")
        ->check(CLI::IsMember({"uf", "h5", "nc", "nc4", "plv"}));
    command
        .add_option("--fields", arguments.fields,
                    "Clean these fields only, NAME,NAME (default: all that clutter spoils)")
        ->delimiter(',');
    command.add_option("--keep", arguments.keep,
                       "Classes that stay beside precipitation: noise, clutter, ground-clutter, "
                       "sea-clutter, turbine-clutter");
    command.add_option("--picture", call.plot,
                       "Draw the reflectivity before and after: PNG, SVG or PDF, or a directory");
    addCodesOptions(command, call);
    command.add_flag("--json", call.json, "Print one JSON object a file");
    command.add_flag("-q,--quiet", call.quiet, "Print errors only");
}

}  // namespace

void addCleanCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("clean", "Write scans without the echo of clutter and noise");
    command->footer(kFooter);
    const auto arguments = std::make_shared<CleanArguments>();
    ClassifyCall& call = arguments->call;
    command->add_option("INPUT", call.inputs, kInputsHelp)->required();
    addOutputOptions(*command, *arguments);
    addInputOptions(*command, call.how);
    addFieldOptions(*command, call.how);
    addClassesOptions(*command, call);
    addJobsOption(*command, call.jobs);
    addLayoutOption(*command, call.read);
    command->callback([arguments] {
        arguments->call.clean = cleanOptionsFrom(*arguments);
        requireSoundCall(arguments->call);
        if (!ClassifyRun(arguments->call).perform()) {
            throw CommandFailed{};
        }
    });
}

}  // namespace cli
