#include "commands/classify.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "picture/picture.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/progress.h"
#include "report/summary.h"
#include "report/terminal.h"
#include "scan/classes/classify_sweep.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/record/write_record.h"
#include "scan/formats/write_classes.h"

namespace cli {

using scan::ClassifiedSweep;
using scan::ClassifyOptions;
using scan::classifySweep;
using scan::FileFormat;
using scan::parseFieldMap;
using scan::parseInputs;
using scan::ReadOptions;
using scan::recognise;
using scan::Role;
using scan::Scan;
using scan::Sweep;
using scan::SweepClasses;
using scan::sweepPaths;
using scan::writeClasses;
using scan::WrittenFiles;

namespace {

namespace fs = std::filesystem;

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier classify scan.uf\n"
    "  clutterclassifier classify scan.uf -o classes.uf --plot classes.png\n"
    "  clutterclassifier classify *.uf -o results/ --format csv\n"
    "  clutterclassifier classify scan.uf --inputs textures --window 7x3\n"
    "  clutterclassifier classify scan.uf --map Z1=zhh,D1=zdr --radar-constant 36.5 --min-snr 10\n"
    "\n"
    "OUT by its ending: .uf Universal Format with the classes as one more field (CC), .csv a "
    "table\n"
    "with one line a gate, anything else a field record file. Codes: 0 precipitation, 3 noise,\n"
    "5 ground clutter; with --classes all also 6 sea clutter, 7 turbine clutter.";

struct Arguments {
    std::vector<std::string> inputs;
    std::string output, plot, format, membership, inputNames, map, window = "5x3",
                                                                   classes = "ground";
    std::optional<double> minSnrDb, radarConstantDb;
    std::optional<int> sweep;
    bool removeIsolated = false, quiet = false;
    ReadOptions read;
};

/* One input's part of the work. */
struct Job {
    const InputFile* input;
    std::string output, plot;  // empty: not wanted
};

bool isDirectoryName(const std::string& path) {
    std::error_code ignored;
    return !path.empty() && (path.back() == '/' || fs::is_directory(path, ignored));
}

/* The size at the beginning of text, which loses it; 0 when it is none. */
int takeSize(std::string_view& text) {
    int size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc::result_out_of_range ? INT_MAX : size;
}

/* "5x3": gates x rays, both odd, more than one gate in all. */
void parseWindow(const std::string& text, ClassifyOptions& options) {
    constexpr int kWidest = 999;
    std::string_view rest = text;
    options.textureGates = takeSize(rest);
    const bool hasTwo = rest.starts_with('x');
    if (hasTwo) rest.remove_prefix(1);
    options.textureRays = takeSize(rest);
    const auto fits = [](int size) { return size >= 1 && size <= kWidest && size % 2 == 1; };
    if (!hasTwo || !rest.empty() || !fits(options.textureGates) || !fits(options.textureRays) ||
        options.textureGates * options.textureRays < 2)
        throw CLI::ValidationError("--window", "expected two odd sizes up to " +
                                                   std::to_string(kWidest) +
                                                   ", GATESxRAYS, as in 5x3: " + text);
}

/* What would have no effect must not be passed over in silence. */
void requireUsefulOptions(const Arguments& arguments) {
    if (!arguments.format.empty() && !isDirectoryName(arguments.output))
        throw CLI::ValidationError("--format",
                                   "is for an output directory: a file's ending tells its form");
    if (!isDirectoryName(arguments.output))
        requireEnding("--output", arguments.output,
                      {".uf", ".h5", ".hdf", ".hdf5", ".nc", ".nc4", ".csv"});
}

ClassifyOptions optionsFrom(const Arguments& arguments) {
    requireUsefulOptions(arguments);
    ClassifyOptions options;
    parseWindow(arguments.window, options);
    try {
        if (!arguments.inputNames.empty()) options.mask = parseInputs(arguments.inputNames);
        options.map = parseFieldMap(arguments.map);
        if (!arguments.plot.empty() && !isDirectoryName(arguments.plot))
            checkPictureEnding(arguments.plot);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(error.what());
    }
    options.minSnrDb = arguments.minSnrDb;
    options.radarConstantDb = arguments.radarConstantDb;
    options.removeIsolated = arguments.removeIsolated;
    options.allClasses = arguments.classes == "all";
    return options;
}

/* The name for one input: the given one, or in a directory one after the input. */
std::string targetFor(const std::string& given, const InputFile& input, const std::string& ending) {
    if (given.empty() || !isDirectoryName(given)) return given;
    return (fs::path(given) / (input.stem() + ending)).string();
}

/* The form of outputs in a directory: as asked for, else that of the input. */
std::string endingFor(const Arguments& arguments, const InputFile& input) {
    if (!arguments.format.empty()) return "." + arguments.format;
    try {
        return recognise(input.path()) == FileFormat::kUniversalFormat ? ".uf" : ".plv";
    } catch (const std::exception&) {
        return ".plv";  // the input will be complained about when it is read
    }
}

void requireDistinct(const Job& job, std::set<std::string>& taken) {
    for (const std::string& target : {job.output, job.plot}) {
        if (target.empty()) continue;
        if (!taken.insert(target).second)
            throw CLI::ValidationError("two results would be written to " + target);
        std::error_code ignored;
        if (fs::equivalent(target, job.input->name(), ignored))
            throw CLI::ValidationError(target + " would overwrite its input");
    }
}

std::vector<Job> planJobs(const Arguments& arguments, const std::vector<InputFile>& inputs) {
    for (const std::string& target : {arguments.output, arguments.plot}) {
        if (arguments.inputs.size() > 1 && !target.empty() && !isDirectoryName(target))
            throw CLI::ValidationError("with several inputs " + target +
                                       " must be a directory (end it in /)");
    }
    std::vector<Job> jobs;
    std::set<std::string> taken;
    for (const InputFile& input : inputs) {
        jobs.push_back({&input, targetFor(arguments.output, input, endingFor(arguments, input)),
                        targetFor(arguments.plot, input, ".png")});
        requireDistinct(jobs.back(), taken);
    }
    return jobs;
}

/* Directories that were named with a trailing separator are made. */
void makeDirectories(const Arguments& arguments) {
    for (const std::string& target : {arguments.output, arguments.plot}) {
        if (target.empty() || target.back() != '/') continue;
        std::error_code error;
        fs::create_directories(target, error);
        if (error) throw std::runtime_error(target + ": " + error.message());
    }
}

class Run {
  public:
    explicit Run(const Arguments& arguments)
        : arguments_(arguments),
          options_(optionsFrom(arguments)),
          inputs_(arguments.inputs.begin(), arguments.inputs.end()),
          jobs_(planJobs(arguments, inputs_)),
          progress_(!arguments.quiet) {
        requireLayoutUsed(arguments.read, inputs_);
    }

    /* Works through all inputs; one that fails does not keep the others from being done. */
    bool perform() {
        makeDirectories(arguments_);
        options_.membership = membershipDirectory(arguments_.membership);
        bool good = true;
        for (std::size_t i = 0; i < jobs_.size(); ++i) good &= attempt(i);
        progress_.clear();
        if (!arguments_.quiet) printTotals(totals_);
        return good;
    }

  private:
    bool attempt(std::size_t i) {
        return cli::attempt(jobs_[i].input->name(), [&] {
            const Progress::ClearAtEnd clear(progress_);
            classifyFile(i);
            ++totals_.files;
        });
    }

    void classifyFile(std::size_t i) {
        const Job& job = jobs_[i];
        showFile(i);
        std::unique_ptr<Cufrw> words;
        const Scan scan = readInput(*job.input, words, arguments_.read);
        const std::vector<const Sweep*> sweeps = findSweeps(scan, arguments_.sweep);
        std::vector<ClassifiedSweep> results;
        for (const Sweep* sweep : sweeps) {
            showSweep(job, sweeps.size(), results.size());
            results.push_back(classifySweep(scan, *sweep, options_));
        }
        progress_.clear();
        report(scan, sweeps, results);
        write(job, scan, words.get(), sweeps, results);
    }

    void showFile(std::size_t i) {
        progress_.show(static_cast<int>(i), static_cast<int>(jobs_.size()), jobs_[i].input->name());
    }

    void showSweep(const Job& job, std::size_t count, std::size_t done) {
        if (jobs_.size() < 2)
            progress_.show(static_cast<int>(done), static_cast<int>(count),
                           job.input->name() + " sweep " + std::to_string(done + 1));
    }

    void report(const Scan& scan, const std::vector<const Sweep*>& sweeps,
                const std::vector<ClassifiedSweep>& results) {
        for (const ClassifiedSweep& result : results) totals_.add(result);
        if (!arguments_.quiet) printScanLine(scan);
        noteDamage(scan, arguments_.quiet ? Beside::kErrors : Beside::kResults);
        if (arguments_.quiet) return;
        for (std::size_t s = 0; s < sweeps.size(); ++s) printSweep(*sweeps[s], results[s]);
    }

    void write(const Job& job, const Scan& scan, Cufrw* words,
               const std::vector<const Sweep*>& sweeps,
               const std::vector<ClassifiedSweep>& results) {
        std::vector<SweepClasses> classes;
        for (std::size_t s = 0; s < sweeps.size(); ++s)
            classes.push_back({sweeps[s], &results[s].classes});
        if (!job.plot.empty()) draw(job, scan, sweeps, results);
        if (job.output.empty()) return;
        const WrittenFiles written = writeClasses(job.output, scan, words, classes);
        if (arguments_.quiet) return;
        for (const std::string& note : written.notes) printNote(note);
        announce(written.paths);
    }

    void draw(const Job& job, const Scan& scan, const std::vector<const Sweep*>& sweeps,
              const std::vector<ClassifiedSweep>& results) {
        const std::vector<std::string> paths = sweepPaths(job.plot, scan, sweeps);
        for (std::size_t s = 0; s < paths.size(); ++s) {
            drawClasses(scan, *sweeps[s], *results[s].fields[Role::kZhh], results[s].classes, {},
                        paths[s]);
        }
        if (!arguments_.quiet) announce(paths);
    }

    const Arguments& arguments_;
    ClassifyOptions options_;
    std::vector<InputFile> inputs_;
    std::vector<Job> jobs_;
    Progress progress_;
    Totals totals_;
};

void addOptions(CLI::App& command, Arguments& arguments) {
    command
        .add_option("INPUT", arguments.inputs,
                    "Radar files: Universal Format, field record, polar data or German DX")
        ->required();
    command.add_option("-o,--output", arguments.output,
                       "Write the classes: a file, or a directory (existing, or ending in /)");
    command
        .add_option("--format", arguments.format,
                    "Form of the files in an output directory (default: that of the input)")
        ->check(CLI::IsMember({"uf", "h5", "nc", "nc4", "csv", "plv"}));
    command.add_option("--plot", arguments.plot,
                       "Draw reflectivity beside classes: PNG, SVG or PDF, or a directory");
    command.add_option("--inputs", arguments.inputNames,
                       "Inputs of the classifier: zhh-texture, zdr-texture, pdp-texture, "
                       "rhv-texture, vel, ldr, pdf, rhv, wid; or textures, all (default: what the "
                       "file has, but not wid)");
    command.add_option("--map", arguments.map,
                       "What fields are: ZD=zdr,ZT=zhh,CM=pdf,XX=none; overrides their names");
    command
        .add_option("--min-snr", arguments.minSnrDb,
                    "Lowest signal-to-noise ratio of an echo, dB (default: 10; 0 where noise "
                    "seems removed already)")
        ->check(isFinite);
    command
        .add_option("--radar-constant", arguments.radarConstantDb,
                    "Calibration constant C of SNR = Z - 20 log10(range in km) + C, dB "
                    "(default: from the file, else estimated)")
        ->check(isFinite);
    command.add_option("--window", arguments.window, "Texture window, GATESxRAYS, odd sizes")
        ->capture_default_str();
    command.add_flag("--remove-isolated", arguments.removeIsolated,
                     "Turn isolated precipitation gates into clutter");
    command
        .add_option("--classes", arguments.classes,
                    "ground: precipitation and ground clutter; all: sea (6) and wind-turbine "
                    "clutter (7) too")
        ->check(CLI::IsMember({"ground", "all"}))
        ->capture_default_str();
    command.add_option("--sweep", arguments.sweep, "Only the sweep of this number");
    command.add_option("--membership", arguments.membership,
                       "Directory of membership functions (default: CLUTTERCLASSIFIER_MEMBERSHIP, "
                       "else the set that came with the program)");
    addLayoutOption(command, arguments.read);
    command.add_flag("-q,--quiet", arguments.quiet, "Print errors only");
}

}  // namespace

void addClassifyCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("classify", "Tell precipitation, ground clutter and noise apart");
    command->footer(kFooter);
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*command, *arguments);
    command->callback([arguments] {
        if (!Run(*arguments).perform()) throw CommandFailed{};
    });
}

}  // namespace cli
