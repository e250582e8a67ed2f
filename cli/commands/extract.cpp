/* extract.cpp - the command `extract`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/terminal.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/reading/library_output.h"
#include "scan/formats/writing/output_file.h"
#include "scan/points/samples.h"
#include "scan/text.h"

namespace cli {

namespace {

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier extract scan.uf gauges.txt\n"
    "  clutterclassifier extract scan.uf gauges.txt --fields DZ,DR -o gauges.dat\n"
    "  clutterclassifier extract scan.uf stations.txt --map --origin 651000,4321000 -o out.csv\n"
    "\n"
    "POINTS is a text file with two numbers on each line: range (m) and azimuth (degrees), or "
    "with\n"
    "--map and for Cartesian records x and y (m). If OUT ends in .csv it is a comma-separated\n"
    "table, else a column file: date and time of the scan, the point, its values.";

struct ExtractArguments {
    std::string input, points, output;
    std::vector<std::string> fields;
    std::optional<int> sweep;
    scan::ReadOptions read;
    bool map = false;
    std::vector<double> origin;  // empty: the radar is at 0,0
};

/* The points as the user gave them, and the values there. */
struct Extract {
    scan::DateTime time;
    bool map = false;
    scan::Points points;
    scan::Samples samples;
};

Extract extractFromGrid(const ExtractArguments& arguments, const InputFile& input,
                        scan::Points points) {
    const scan::RecordArray grid = scan::loadRecords(input.path());
    const Cpluvek& first = grid.records[0];
    Extract extract;
    extract.time = {first.year, first.month, first.day, first.hour, first.minute, first.second};
    extract.map = true;
    extract.samples = scan::sampleGrid(grid, points, arguments.fields);
    extract.points = std::move(points);
    return extract;
}

Extract extractFromScan(const ExtractArguments& arguments, const InputFile& input,
                        scan::Points points) {
    const scan::Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kErrors);
    const scan::Sweep& sweep = findSweep(scan, arguments.sweep);
    Extract extract;
    extract.time = scan.time;
    extract.map = arguments.map;
    const double east = arguments.origin.empty() ? 0.0 : arguments.origin[0];
    const double north = arguments.origin.empty() ? 0.0 : arguments.origin[1];
    const scan::Points polar =
        arguments.map ? scan::polarFromMap(points, east, north, sweep.fixedAngleDeg) : points;
    extract.samples = scan::sampleSweep(scan, sweep, polar, arguments.fields);
    extract.points = std::move(points);
    return extract;
}

bool isGridFile(const std::string& path) {
    return scan::recognise(path) == scan::FileFormat::kFieldRecord &&
           scan::loadRecords(path).isGrid();
}

/* Rejects options that have no meaning for a grid. */
void requireGridOptions(const ExtractArguments& arguments) {
    if (arguments.sweep) {
        throw CLI::ValidationError("--sweep", "a grid has no sweeps");
    }
    if (arguments.read.polarLayout != 0) {
        throw CLI::ValidationError("--layout", "a grid is not a polar data file");
    }
    if (!arguments.origin.empty()) {
        throw CLI::ValidationError("--origin", "a grid has its own coordinates");
    }
}

/* The shortest text that reads back as the same number. */
void printNumber(float value, std::FILE* out) {
    char digits[64];
    if (std::isnan(value)) {
        value = std::abs(value);
    }
    const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    std::fwrite(digits, 1, static_cast<std::size_t>(end - digits), out);
}

/* A name as one cell of the table: in quotes where it holds a comma or quotes. */
std::string cellOf(const std::string& field) {
    const std::string name = forTerminal(field);
    if (name.find_first_of(",\"") == std::string::npos) {
        return name;
    }
    std::string cell = "\"";
    for (const char c : name) {
        cell += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return cell + "\"";
}

void printTable(const Extract& extract, std::FILE* out) {
    std::fputs(extract.map ? "x,y" : "range,azimuth", out);
    for (const std::string& name : extract.samples.names) {
        std::fprintf(out, ",%s", cellOf(name).c_str());
    }
    std::fputc('\n', out);
    for (std::size_t i = 0; i < extract.points.size(); ++i) {
        printNumber(extract.points.first[i], out);
        std::fputc(',', out);
        printNumber(extract.points.second[i], out);
        for (const std::vector<float>& column : extract.samples.columns) {
            std::fputc(',', out);
            printNumber(column[i], out);
        }
        std::fputc('\n', out);
    }
}

void writeTableFile(const Extract& extract, const scan::OutputFile& output) {
    scan::requireWritten(output, [&] {
        std::FILE* file = std::fopen(output.temporary().c_str(), "w");
        if (file == nullptr) {
            return false;
        }
        printTable(extract, file);
        const bool written = std::ferror(file) == 0;
        return std::fclose(file) == 0 && written;
    });
}

unsigned secondsOf(const scan::DateTime& t) {
    Ctiempo time;
    return time.GetSecondsSince1970(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

void writeColumnFile(const Extract& extract, const scan::OutputFile& file) {
    constexpr int kOverwrite = 1;
    constexpr int kThreeDecimals = 3;
    const std::size_t rows = extract.points.size();
    std::vector<unsigned> times(rows, secondsOf(extract.time));
    const std::size_t columns = 2 + extract.samples.columns.size();
    std::vector<float> cells;
    for (std::size_t i = 0; i < rows; ++i) {
        cells.push_back(extract.points.first[i]);
        cells.push_back(extract.points.second[i]);
        for (const std::vector<float>& column : extract.samples.columns) {
            cells.push_back(column[i]);
        }
    }
    std::string name = file.temporary();
    CDSP dsp;
    scan::requireWritten(file, [&] {
        dsp.SaveDataToFile(name.data(), times.data(), cells.data(), static_cast<int>(rows),
                           static_cast<int>(columns), kOverwrite, kThreeDecimals);
        return scan::holdsLines(name, rows);
    });
}

void write(const Extract& extract, const std::string& output) {
    if (output.empty()) {
        return printTable(extract, stdout);
    }
    scan::OutputFile file(output);
    if (scan::endingOf(output) == ".csv") {
        writeTableFile(extract, file);
    } else {
        writeColumnFile(extract, file);
    }
    file.commit();
}

void runExtract(const ExtractArguments& arguments) {
    requireOther("--output", arguments.output, arguments.input);
    requireOther("--output", arguments.output, arguments.points);
    const InputFile input(arguments.input);
    const bool grid = naming(input.name(), [&] { return isGridFile(input.path()); });
    if (grid) {
        requireGridOptions(arguments);
    }
    requireLayoutUsed(arguments.read, input);
    const scan::Points points =
        naming(arguments.points, [&] { return scan::readPoints(arguments.points); });
    const Extract extract = naming(input.name(), [&] {
        return grid ? extractFromGrid(arguments, input, points)
                    : extractFromScan(arguments, input, points);
    });
    write(extract, arguments.output);
}

}  // namespace

void addExtractCommand(CLI::App& app) {
    auto arguments = std::make_shared<ExtractArguments>();
    CLI::App* command = app.add_subcommand("extract", "Values of fields at the points of a list");
    command->footer(kFooter);
    command->add_option("INPUT", arguments->input, kInputHelp)->required();
    command->add_option("POINTS", arguments->points, "Text file with two numbers on each line")
        ->required();
    command->add_option("-o,--output", arguments->output,
                        "Write a file: .csv a table, else a column file (default: a table on "
                        "standard output)");
    command->add_option("--fields", arguments->fields, "Fields (default: all)")->delimiter(',');
    command->add_option("--sweep", arguments->sweep, "Number of the sweep (default: the first)");
    addLayoutOption(*command, arguments->read);
    CLI::Option* map =
        command->add_flag("--map", arguments->map, "POINTS are x (east) and y (north) in m");
    command
        ->add_option("--origin", arguments->origin,
                     "x and y of the radar, for --map (default: 0,0)")
        ->delimiter(',')
        ->expected(2)
        ->check(isFinite)
        ->needs(map);
    command->callback([arguments] { runExtract(*arguments); });
}

}  // namespace cli
