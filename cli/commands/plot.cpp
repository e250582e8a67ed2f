/* plot.cpp - the command `plot`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <stdexcept>

#include "options/classify_options.h"
#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "picture/picture.h"
#include "report/failure.h"
#include "report/notes.h"
#include "scan/fields/find_field.h"
#include "scan/formats/read_scan.h"

namespace cli {

namespace {

struct PlotArguments {
    std::string input, output;
    std::vector<std::string> fields;
    std::optional<int> sweep;
    PictureOptions picture;
    ClassifyArguments how;
    scan::ReadOptions read;
    bool why = false;
};

/* The classes of the sweep with the options' defaults, and what decided them. */
void drawWhy(const PlotArguments& arguments, const scan::Scan& scan, const scan::Sweep& sweep) {
    scan::ClassifyOptions options = classifyOptionsFrom(arguments.how);
    options.membership = membershipDirectory(arguments.how.membership);
    options.certainty = true;
    drawReasons(scan, sweep, classifySweep(scan, sweep, options), arguments.picture,
                arguments.output);
}

void drawFile(const PlotArguments& arguments, const InputFile& input) {
    const scan::Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kErrors);
    const scan::Sweep& sweep = findSweep(scan, arguments.sweep);
    if (arguments.why) {
        return drawWhy(arguments, scan, sweep);
    }
    std::vector<scan::Field> fields;
    for (const std::string& name : arguments.fields) {
        fields.push_back(scan::findField(sweep, name));
    }
    if (fields.empty()) {
        fields.push_back(chooseField(sweep, ""));
    }
    drawPanels(scan, sweep, fields, arguments.picture, arguments.output);
}

/* Rejects options that would have no effect. */
void requireSoundArguments(const CLI::App& command, const PlotArguments& arguments,
                           const InputFile& input) {
    for (const char* option : {"--field", "--vmin", "--vmax"}) {
        if (arguments.why && command.count(option) > 0) {
            throw CLI::ValidationError(option, "cannot be combined with --why");
        }
    }
    for (const char* option : {"--inputs", "--window", "--neighbourhood", "--map", "--min-snr",
                               "--radar-constant", "--membership"}) {
        if (!arguments.why && command.count(option) > 0) {
            throw CLI::ValidationError(option, "goes with --why");
        }
    }
    requirePictureEnding("--output", arguments.output);
    requireOther("--output", arguments.output, arguments.input);
    requireLayoutUsed(arguments.read, input);
    if (arguments.picture.displayMin >= arguments.picture.displayMax) {
        throw CLI::ValidationError("--vmax", "must be above --vmin");
    }
}

void runPlot(const CLI::App& command, const PlotArguments& arguments) {
    const InputFile input(arguments.input);
    requireSoundArguments(command, arguments, input);
    naming(input.name(), [&] { drawFile(arguments, input); });
}

}  // namespace

void addPlotCommand(CLI::App& app) {
    auto arguments = std::make_shared<PlotArguments>();
    CLI::App* command = app.add_subcommand("plot", "Draw fields of a scan as a picture");
    command->add_option("INPUT", arguments->input, kInputHelp)->required();
    addLayoutOption(*command, arguments->read);
    command->add_option("-o,--output", arguments->output, "Picture: FILE.png, FILE.svg or FILE.pdf")
        ->required();
    command
        ->add_option("--field", arguments->fields,
                     "Field to draw (default: the reflectivity); several give panels")
        ->delimiter(',');
    command->add_flag("--why", arguments->why,
                      "Classify, and draw reflectivity, classes, probability of precipitation and "
                      "the input that decided");
    addInputOptions(*command, arguments->how);
    addFieldOptions(*command, arguments->how);
    command->add_option("--sweep", arguments->sweep, "Number of the sweep (default: the first)");
    command->add_option("--width", arguments->picture.widthPx, "Width of the picture in pixels")
        ->check(CLI::Range(240, 10000));
    command->add_option("--max-range", arguments->picture.maxRangeKm, "Outermost range in km")
        ->check(isFinite)
        ->check(CLI::PositiveNumber);
    command->add_option("--vmin", arguments->picture.displayMin, "Beginning of the colour scale")
        ->check(isFinite);
    command->add_option("--vmax", arguments->picture.displayMax, "End of the colour scale")
        ->check(isFinite);
    command->footer(
        "Examples:\n"
        "  clutterclassifier plot scan.uf --field DZ,VR --max-range 100 -o scan.png\n"
        "  clutterclassifier plot scan.uf --why -o why.png");
    command->callback([arguments, command] { runPlot(*command, *arguments); });
}

}  // namespace cli
