/* classify.cpp - the command `classify`: its options, and what makes a call of it sensible. */
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
#include "picture/picture.h"
#include "report/failure.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier classify scan.uf\n"
    "  clutterclassifier classify scan.uf -o classes.uf --plot classes.png\n"
    "  clutterclassifier classify archive/ -o results/ --format csv -j 4\n"
    "  clutterclassifier classify scan.uf --inputs textures --window 7x3 --neighbourhood off\n"
    "  clutterclassifier classify scan.uf --certainty -o classes.uf\n"
    "  clutterclassifier classify scan.uf --map Z1=zhh,D1=zdr --radar-constant 36.5 --min-snr 10\n"
    "\n"
    "The ending of OUT chooses its format: .uf Universal Format with the classes as one more "
    "field\n"
    "(CC), .h5 ODIM_H5, .nc CfRadial (.nc4 release 2), .csv a table with one line a gate,\n"
    "anything else a field record file. Codes:\n"
    "0 precipitation, 3 noise, 5 ground clutter; with --classes all also 6 sea clutter and\n"
    "7 turbine clutter.";

/* Rejects options that would have no effect, and names of files that promise another format. */
void requireSoundCall(const ClassifyCall& call) {
    if (!isDirectoryName(call.output)) {
        if (!call.format.empty()) {
            throw CLI::ValidationError(
                "--format", "is for an output directory: a file's ending chooses its format");
        }
        requireEnding("--output", call.output,
                      {".uf", ".h5", ".hdf", ".hdf5", ".nc", ".nc4", ".csv"});
    }
    if (call.certainty && call.output.empty()) {
        throw CLI::ValidationError("--certainty", "needs an output, -o");
    }
    requireCodesUsed(call);
    if (!call.plot.empty() && !isDirectoryName(call.plot)) {
        requirePictureEnding("--plot", call.plot);
    }
}

void addOutputOptions(CLI::App& command, ClassifyCall& call) {
    command.add_option("-o,--output", call.output,
                       "Write the classes: a file, or a directory (existing, or ending in /)");
    command
        .add_option("--format", call.format,
                    "Format of the files in an output directory (default: that of the input)")
        ->check(CLI::IsMember({"uf", "h5", "nc", "nc4", "csv", "plv"}));
    command.add_flag("--certainty", call.certainty,
                     "Also write the probability of precipitation (PR) and the margin (MA)");
    command.add_option("--plot", call.plot,
                       "Draw reflectivity beside classes: PNG, SVG or PDF, or a directory");
    command.add_flag("--json", call.json, "Print one JSON object a file");
    command.add_flag("-q,--quiet", call.quiet, "Print errors only");
}

}  // namespace

void addClassifyCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("classify", "Tell precipitation, ground clutter and noise apart");
    command->footer(kFooter);
    const auto call = std::make_shared<ClassifyCall>();
    command->add_option("INPUT", call->inputs, kInputsHelp)->required();
    addOutputOptions(*command, *call);
    addInputOptions(*command, call->how);
    addFieldOptions(*command, call->how);
    addClassesOptions(*command, *call);
    addCodesOptions(*command, *call);
    command->add_option("--sweep", call->sweep, "Only the sweep of this number");
    addJobsOption(*command, call->jobs);
    addLayoutOption(*command, call->read);
    command->callback([call] {
        requireSoundCall(*call);
        if (!ClassifyRun(*call).perform()) {
            throw CommandFailed{};
        }
    });
}

}  // namespace cli
