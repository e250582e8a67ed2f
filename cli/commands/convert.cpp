/* convert.cpp - the command `convert`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/terminal.h"
#include "scan/formats/containers/write_containers.h"
#include "scan/formats/polar/write_polar.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier convert scan.dx scan.uf\n"
    "  clutterclassifier convert scan.dat scan.plv --layout 280\n"
    "  clutterclassifier convert scan.uf reflectivity.pol --field DZ --product 1814\n"
    "\n"
    "The ending of OUT chooses its format: .uf Universal Format, .h5 ODIM_H5, .nc CfRadial 1,\n"
    ".nc4 CfRadial 2, .pol a polar data file of one field (packed as its product code says: 1814\n"
    "keeps floats), anything else a field record file.";

constexpr int kFloatProduct = 1814;

struct ConvertArguments {
    std::string input, output, field;
    int product = kFloatProduct;
    std::optional<int> sweep;
    scan::ReadOptions read;
};

/* A scan of the wanted sweep only: field record and polar data files hold one. */
scan::Scan withOneSweep(const scan::Scan& scan, const ConvertArguments& arguments) {
    scan::Scan single = scan;
    single.sweeps = {findOnlySweep(scan, arguments.sweep)};
    return single;
}

void writeAsRecords(const scan::Scan& scan, const scan::OutputFile& file) {
    const scan::Sweep& sweep = scan.sweeps[0];
    if (sweep.rhi) {
        printNote(scan::lostElevationsNote("a field record file"));
    }
    const std::string names = scan::shortNamesNote(sweep.fields);
    if (!names.empty()) {
        printNote(names);
    }
    scan::writeRecords(file, scan, sweep, sweep.fields);
}

/* Rejects options that would have no effect. */
void requireSoundCall(const CLI::App& command, const ConvertArguments& arguments,
                      const InputFile& input) {
    requireOther("OUT", arguments.output, arguments.input);
    requireEnding("OUT", arguments.output, {".uf", ".h5", ".hdf", ".hdf5", ".nc", ".nc4", ".pol"});
    requireLayoutUsed(arguments.read, input);
    for (const char* option : {"--field", "--product"}) {
        if (command.count(option) > 0 && scan::endingOf(arguments.output) != ".pol") {
            throw CLI::ValidationError(option, "goes with a polar data file, OUT ending in .pol");
        }
    }
}

void convert(const ConvertArguments& arguments, const InputFile& input) {
    std::unique_ptr<Cufrw> words;
    const scan::Scan scan = readInput(input, words, arguments.read);
    noteDamage(scan, Beside::kResults);
    const std::string ending = scan::endingOf(arguments.output);
    if (scan::isContainerEnding(ending)) {
        printNotes(scan::writeScan(arguments.output,
                                   arguments.sweep ? withOneSweep(scan, arguments) : scan)
                       .notes);
        std::printf("wrote %s\n", forTerminal(arguments.output).c_str());
        return;
    }
    scan::OutputFile file(arguments.output);
    if (ending == ".uf" && words != nullptr && !arguments.sweep) {
        printNotes(scan::writeUniversalFormat(file, scan, words.get()));
    } else if (ending == ".uf") {
        printNotes(scan::writeUniversalFormat(
            file, arguments.sweep ? withOneSweep(scan, arguments) : scan, nullptr));
    } else if (ending == ".pol") {
        const scan::Scan single = withOneSweep(scan, arguments);
        const scan::Sweep& sweep = single.sweeps[0];
        printNotes(scan::writePolarData(file, single, sweep, chooseField(sweep, arguments.field),
                                        arguments.product));
    } else {
        writeAsRecords(withOneSweep(scan, arguments), file);
    }
    file.commit();
    std::printf("wrote %s\n", forTerminal(arguments.output).c_str());
}

}  // namespace

void addConvertCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("convert", "Write a scan in another format");
    const auto arguments = std::make_shared<ConvertArguments>();
    command->add_option("INPUT", arguments->input, kInputHelp)->required();
    command->add_option("OUT", arguments->output, "File to write")->required();
    command->add_option("--field", arguments->field,
                        "Field for a polar data file (default: the reflectivity, else the first)");
    command
        ->add_option("--product", arguments->product,
                     "Code of the single-parameter product of a polar data file")
        ->check(CLI::IsMember(scan::singleParameterProducts()))
        ->capture_default_str();
    command->add_option("--sweep", arguments->sweep, "Only the sweep of this number");
    addLayoutOption(*command, arguments->read);
    command->footer(kFooter);
    command->callback([arguments, command] {
        const InputFile input(arguments->input);
        requireSoundCall(*command, *arguments, input);
        naming(input.name(), [&] { convert(*arguments, input); });
    });
}

}  // namespace cli
