/* plot.cpp - the command `plot`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "picture/picture.h"
#include "report/failure.h"
#include "report/notes.h"
#include "scan/fields/find_field.h"
#include "scan/formats/read_scan.h"

namespace cli {

using scan::Field;
using scan::findField;
using scan::ReadOptions;
using scan::Scan;
using scan::Sweep;

namespace {

struct PlotArguments {
    std::string input, output;
    std::vector<std::string> fields;
    std::optional<int> sweep;
    PictureOptions picture;
    ReadOptions read;
};

void drawFile(const PlotArguments& arguments, const InputFile& input) {
    const Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kErrors);
    const Sweep& sweep = findSweep(scan, arguments.sweep);
    std::vector<Field> fields;
    for (const std::string& name : arguments.fields) {
        fields.push_back(findField(sweep, name));
    }
    if (fields.empty()) {
        fields.push_back(chooseField(sweep, ""));
    }
    drawPanels(scan, sweep, fields, arguments.picture, arguments.output);
}

void requireSoundArguments(const PlotArguments& arguments, const InputFile& input) {
    requirePictureEnding("--output", arguments.output);
    requireOther("--output", arguments.output, arguments.input);
    requireLayoutUsed(arguments.read, input);
    if (arguments.picture.displayMin >= arguments.picture.displayMax) {
        throw CLI::ValidationError("--vmax", "must be above --vmin");
    }
}

void runPlot(const PlotArguments& arguments) {
    const InputFile input(arguments.input);
    requireSoundArguments(arguments, input);
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
        "Example: clutterclassifier plot scan.uf --field DZ,VR --max-range 100 -o scan.png");
    command->callback([arguments] { runPlot(*arguments); });
}

}  // namespace cli
