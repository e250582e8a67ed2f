/* export.cpp - the command `export`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <map>
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
#include "scan/fields/find_field.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/reading/library_output.h"
#include "scan/formats/record/read_record.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier export scan.uf --field DZ -o reflectivity.csv\n"
    "  clutterclassifier export rain.plv -o rain.asc\n"
    "  clutterclassifier export scan.uf --field VR --sweep 2 -o velocity.bin\n"
    "\n"
    "The ending of OUT, or --format, chooses its format: csv one line for each gate and one "
    "column\n"
    "for each ray, asc the ASCII grid of a Cartesian record, bin the values as 4-byte floats in\n"
    "machine order, ray after ray.";

constexpr float kNoData = -9999.0f;
constexpr std::size_t kGridHeaderLines = 6;

struct ExportArguments {
    std::string input, output, format, field;
    std::optional<int> sweep;
    scan::ReadOptions read;
};

/* What is exported: a field of a sweep as a record, or a record of a file. */
struct Source {
    Cpluvek record;
    bool grid = false;

    [[nodiscard]] std::size_t size() const {
        return static_cast<std::size_t>(record.nrays) * static_cast<std::size_t>(record.ngates);
    }
};

void loadSweep(const ExportArguments& arguments, const InputFile& input, Source& source) {
    const scan::Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kErrors);
    const scan::Sweep& sweep = findSweep(scan, arguments.sweep);
    if (!(sweep.gateSpacingM > 0)) {
        throw std::runtime_error("the gate spacing is not positive");
    }
    const scan::Field& field = chooseField(sweep, arguments.field);
    scan::fillFieldRecord(scan, sweep, field.name, field.units, field.values, source.record);
    if (sweep.rhi) {
        scan::headByElevation(sweep, source.record);
    }
}

/* Rejects options that have no meaning for a grid. */
void requireGridOptions(const ExportArguments& arguments) {
    if (arguments.sweep) {
        throw CLI::ValidationError("--sweep", "a grid has no sweeps");
    }
    if (arguments.read.polarLayout != 0) {
        throw CLI::ValidationError("--layout", "a grid is not a polar data file");
    }
}

void loadGrid(const scan::RecordArray& array, const std::string& field, Source& source) {
    const std::vector<std::string> names = array.names();
    const std::size_t at = field.empty() ? 0 : scan::findName(names, field);
    source.grid = true;
    if (array.records[0].CopyPointerToObject(static_cast<int>(at), source.record) != 1) {
        throw std::runtime_error("field " + names[at] + " holds no values");
    }
}

void load(const ExportArguments& arguments, const InputFile& input, Source& source) {
    if (scan::recognise(input.path()) == scan::FileFormat::kFieldRecord) {
        const scan::RecordArray array = scan::loadRecords(input.path());
        if (array.isGrid()) {
            requireGridOptions(arguments);
            return loadGrid(array, arguments.field, source);
        }
    }
    requireLayoutUsed(arguments.read, input);
    loadSweep(arguments, input, source);
}

void writeTableFile(Source& source, const scan::OutputFile& file) {
    if (source.grid) {
        throw std::runtime_error("is a grid: a table needs a scan; use asc or bin");
    }
    scan::writeTable(file, source.record);
}

/* x is along the record's rays, y along its gates: the order that the operation expects. */
void writeGridFile(Source& source, const scan::OutputFile& file) {
    if (!source.grid) {
        throw std::runtime_error("is a scan: an ASCII grid needs a Cartesian record");
    }
    Cpluvek& record = source.record;
    for (std::size_t i = 0; i < source.size(); ++i) {
        if (std::isnan(record.data[i])) {
            record.data[i] = kNoData;
        }
    }
    std::string name = file.temporary();
    std::string nodata = std::to_string(static_cast<int>(kNoData));
    CDSP dsp;
    scan::requireWritten(file, [&] {
        dsp.SaveDataToGISformat(name.data(), record.data, record.ngates, record.nrays, 0,
                                record.ngates, 0, record.nrays, record.axislimits0[0],
                                record.axislimits0[3], record.gatesize, nodata.data(), 0);
        return scan::holdsLines(name, kGridHeaderLines + static_cast<std::size_t>(record.ngates));
    });
}

void writeRaw(Source& source, const scan::OutputFile& file) {
    constexpr int kOverwrite = 1;
    std::string name = file.temporary();
    CDSP dsp;
    scan::requireWritten(file, [&] {
        dsp.savedata2binary(name.data(), source.record.data, static_cast<int>(source.size()),
                            kOverwrite);
        return scan::holdsBytes(name, source.size() * sizeof(float));
    });
}

using Writer = void (*)(Source&, const scan::OutputFile&);

Writer writerFor(const ExportArguments& arguments) {
    static const std::map<std::string, Writer> kWriters = {
        {"csv", writeTableFile}, {"asc", writeGridFile}, {"bin", writeRaw}};
    const std::string ending = scan::endingOf(arguments.output);
    const std::string format =
        !arguments.format.empty() || ending.empty() ? arguments.format : ending.substr(1);
    const auto found = kWriters.find(format);
    if (found == kWriters.end()) {
        throw CLI::ValidationError("--output", "must end in .csv, .asc or .bin, or see --format");
    }
    return found->second;
}

void runExport(const ExportArguments& arguments) {
    const Writer writer = writerFor(arguments);
    requireOther("--output", arguments.output, arguments.input);
    const InputFile input(arguments.input);
    naming(input.name(), [&] {
        Source source;
        load(arguments, input, source);
        scan::OutputFile file(arguments.output);
        writer(source, file);
        file.commit();
    });
}

}  // namespace

void addExportCommand(CLI::App& app) {
    auto arguments = std::make_shared<ExportArguments>();
    CLI::App* command = app.add_subcommand("export", "Write a field as a table, a grid or numbers");
    command->footer(kFooter);
    command->add_option("INPUT", arguments->input, kInputHelp)->required();
    command->add_option("-o,--output", arguments->output, "FILE.csv, FILE.asc or FILE.bin")
        ->required();
    command->add_option("--format", arguments->format, "Format of the file, whatever its ending")
        ->check(CLI::IsMember({"csv", "asc", "bin"}));
    command->add_option("--field", arguments->field,
                        "Field (default: the reflectivity, else the first)");
    command->add_option("--sweep", arguments->sweep, "Number of the sweep (default: the first)");
    addLayoutOption(*command, arguments->read);
    command->callback([arguments] { runExport(*arguments); });
}

}  // namespace cli
