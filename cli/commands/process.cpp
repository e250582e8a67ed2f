/* process.cpp - the command `process`. */
#include "commands/process.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "options/finite_option.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/output_ending.h"
#include "options/selection.h"
#include "output/process_output.h"
#include "picture/picture.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/progress.h"
#include "report/summary.h"
#include "report/terminal.h"
#include "scan/formats/output_file.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/write_classes.h"
#include "scan/points/samples.h"
#include "scan/process/configuration.h"
#include "scan/process/process_sweep.h"
#include "scan/quiet_library.h"

namespace cli {

using scan::Configuration;
using scan::ConfigurationProblem;
using scan::configurationTable;
using scan::examineConfigurationFile;
using scan::exampleConfiguration;
using scan::Field;
using scan::kAllStages;
using scan::kAttenuationStage;
using scan::kClassifyStage;
using scan::kRainStage;
using scan::lowerCase;
using scan::middleElevationDeg;
using scan::OutputFile;
using scan::parseFieldMap;
using scan::Points;
using scan::ProcessedSweep;
using scan::ProcessOptions;
using scan::processSweep;
using scan::QuietLibrary;
using scan::ReadOptions;
using scan::readPoints;
using scan::Scan;
using scan::Sweep;
using scan::sweepPaths;

namespace {

namespace fs = std::filesystem;

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

struct Arguments {
    std::string input, config, output, points, prefix, picture, map, membership, checked;
    std::vector<std::string> plot;
    std::optional<int> what, sweep;
    std::optional<double> freezingLevelM, minSnrDb, radarConstantDb;
    bool printConfig = false, quiet = false;
    ReadOptions read;
};

/* What the settings say that the program, not the library, has to know. */
struct Settings {
    Configuration pairs;
    int what = kAllStages;
    std::optional<int> mask;
    std::string membership;
};

void reportProblems(const std::string& path, const Configuration& configuration) {
    for (const ConfigurationProblem& problem : configuration.problems)
        std::fprintf(stderr, "%s:%d: %s\n", forTerminal(path).c_str(), problem.line,
                     forTerminal(problem.text).c_str());
}

/* The rest is only said. */
void requireReadable(const std::string& path, const Configuration& configuration) {
    reportProblems(path, configuration);
    for (const ConfigurationProblem& problem : configuration.problems)
        if (problem.fatal) throw FileError(path + ": contains invalid settings");
}

Settings readSettings(const std::string& path) {
    Settings settings;
    if (path.empty()) return settings;
    settings.pairs = naming(path, [&] { return examineConfigurationFile(path); });
    requireReadable(path, settings.pairs);
    const auto context = std::make_unique<Crres>();
    std::string name = path;
    const QuietLibrary quiet;
    context->readinitialconfiguration(name.data());
    if (settings.pairs.names("WHAT2DO")) settings.what = context->what2do;
    if (context->clutteralg != scan::kDefaultInputs) settings.mask = context->clutteralg;
    if (settings.pairs.names("CLUTTER_MFS")) settings.membership = context->mfdir;
    return settings;
}

ProcessOptions optionsFrom(const Arguments& arguments) {
    const Settings settings = readSettings(arguments.config);
    ProcessOptions options;
    options.configuration = arguments.config;
    options.what = arguments.what.value_or(settings.what);
    options.freezingLevelM = arguments.freezingLevelM;
    options.classify.mask = settings.mask;
    options.classify.minSnrDb = arguments.minSnrDb;
    options.classify.radarConstantDb = arguments.radarConstantDb;
    options.classify.removeIsolated = true;
    try {
        options.classify.map = parseFieldMap(arguments.map);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--map", error.what());
    }
    if (options.what & kClassifyStage)
        options.classify.membership = membershipDirectory(
            arguments.membership.empty() ? settings.membership : arguments.membership);
    return options;
}

/* The picture's name: the given one, or after the output, or after the input. */
std::string picturePath(const Arguments& arguments, const InputFile& input) {
    if (arguments.plot.empty()) return "";
    if (!arguments.picture.empty()) return arguments.picture;
    if (!arguments.output.empty())
        return fs::path(arguments.output).replace_extension(".png").string();
    return input.stem() + "_processed.png";
}

/* No result may take the place of a file that is read. */
void requireInputsKept(const Arguments& arguments, const std::string& picture) {
    for (const std::string& target : {arguments.output, picture}) {
        for (const std::string& input : {arguments.input, arguments.config, arguments.points}) {
            std::error_code ignored;
            if (!target.empty() && fs::equivalent(target, input, ignored))
                throw CLI::ValidationError(target + " would overwrite its input");
        }
    }
}

void requireSoundArguments(const Arguments& arguments, const InputFile& input) {
    if (arguments.points.empty() != arguments.prefix.empty())
        throw CLI::ValidationError("--points", "goes with --prefix");
    if (!arguments.picture.empty() && arguments.plot.empty())
        throw CLI::ValidationError("--picture", "needs the fields, --plot");
    const std::string picture = picturePath(arguments, input);
    requireInputsKept(arguments, picture);
    requireEnding("--output", arguments.output, {".uf"});
    requireLayoutUsed(arguments.read, input);
    if (!picture.empty() && picture == arguments.output)
        throw CLI::ValidationError("two results would be written to " + picture);
    try {
        if (!picture.empty()) checkPictureEnding(picture);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--picture", error.what());
    }
}

class Run {
  public:
    Run(const Arguments& arguments, const InputFile& input)
        : arguments_(arguments),
          input_(input),
          options_(optionsFrom(arguments)),
          progress_(!arguments.quiet) {}

    void perform() {
        if (!arguments_.points.empty()) readPointList();
        const Scan scan = readInput(input_, arguments_.read);
        sweeps_ = findSweeps(scan, arguments_.sweep);
        if (!arguments_.quiet) printScanLine(scan);
        noteDamage(scan, arguments_.quiet ? Beside::kErrors : Beside::kResults);
        for (std::size_t s = 0; s < sweeps_.size(); ++s) {
            progress_.show(static_cast<int>(s), static_cast<int>(sweeps_.size()),
                           input_.name() + " sweep " + std::to_string(s + 1));
            processed_.push_back(process(scan, *sweeps_[s]));
        }
        progress_.clear();
        write(scan);
    }

  private:
    void readPointList() {
        points_ = naming(arguments_.points, [&] { return readPoints(arguments_.points); });
        const fs::path directory = fs::path(arguments_.prefix).parent_path();
        if (!directory.empty() && !fs::is_directory(directory))
            throw FileError(directory.string() + ": no such directory");
    }

    ProcessedSweep process(const Scan& scan, const Sweep& sweep) {
        progress_.clear();
        if (arguments_.quiet) {
            const QuietLibrary quiet;  // it tells of its stages on standard output
            return processSweep(scan, sweep, options_);
        }
        ProcessedSweep processed = processSweep(scan, sweep, options_);
        report(sweep, processed);
        return processed;
    }

    void report(const Sweep& sweep, const ProcessedSweep& processed) const {
        if (processed.what & kClassifyStage) {
            printSweep(sweep, processed.classified);
        } else {
            std::printf("  sweep %d\n", sweep.number);
            for (const std::string& note : processed.classified.notes)
                std::printf("    note         %s\n", forTerminal(note).c_str());
        }
        if (processed.what & (kAttenuationStage | kRainStage))
            std::printf("    freezing     level %.0f m above the antenna\n",
                        processed.freezingLevelM);
        if (sweep.rhi)
            std::printf("    note         one elevation, %.1f deg, stands for all rays\n",
                        middleElevationDeg(sweep));
    }

    /* Names of one kind of result, one a sweep. */
    std::vector<std::string> pathsFor(const std::string& path, const Scan& scan) const {
        if (path.empty()) return {};
        return sweepPaths(path, scan, sweeps_);
    }

    void write(const Scan& scan) {
        const std::vector<std::string> outputs = pathsFor(arguments_.output, scan);
        const std::vector<std::string> pictures = pathsFor(picturePath(arguments_, input_), scan);
        const bool isUniversalFormat =
            lowerCase(fs::path(arguments_.output).extension().string()) == ".uf";
        std::vector<std::unique_ptr<OutputFile>> files;
        for (std::size_t s = 0; s < outputs.size(); ++s) {
            files.push_back(std::make_unique<OutputFile>(outputs[s]));
            const auto writer = isUniversalFormat ? writeProcessedWords : writeProcessedRecords;
            for (const std::string& note : writer(*files.back(), scan, processed_[s]))
                if (!arguments_.quiet) {
                    printNote(note);
                }
        }
        for (std::size_t s = 0; s < pictures.size(); ++s) draw(scan, processed_[s], pictures[s]);
        for (const auto& file : files) file->commit();
        if (!arguments_.quiet) {
            announce(outputs);
            announce(pictures);
        }
        if (!arguments_.prefix.empty()) sample(scan);
    }

    void draw(const Scan& scan, const ProcessedSweep& processed, const std::string& path) const {
        std::vector<Field> fields;
        for (const std::string& name : arguments_.plot)
            fields.push_back(processedField(processed, name));
        drawPanels(scan, processed.sweep, fields, {}, path);
    }

    void sample(const Scan& scan) {
        const std::vector<std::string> prefixes = pathsFor(arguments_.prefix, scan);
        for (std::size_t s = 0; s < prefixes.size(); ++s) {
            std::vector<std::string> written;
            const std::size_t outside =
                appendSamples(prefixes[s], scan.time, processed_[s], points_, written);
            if (!arguments_.quiet) announce(written);
            if (outside > 0 && !arguments_.quiet)
                std::printf(
                    "  note: %zu of %zu points lie outside the sweep and take the nearest gate\n",
                    outside, points_.size());
        }
    }

    const Arguments& arguments_;
    const InputFile& input_;
    ProcessOptions options_;
    Progress progress_;
    Points points_;
    std::vector<const Sweep*> sweeps_;
    std::vector<ProcessedSweep> processed_;
};

/* The pairs on standard output, which may go into a file; what they mean beside it. */
void printConfiguration() {
    std::string membership;
    try {
        membership = membershipDirectory("");
    } catch (const std::runtime_error&) {
        membership.clear();
    }
    if (membership.find_first_of(" \t\n\v\f\r") != std::string::npos) membership.clear();
    std::fputs(exampleConfiguration(membership).c_str(), stdout);
    std::fflush(stdout);
    std::fprintf(stderr,
                 "\nA key and its value, separated by white space; case matters, the last of equal "
                 "keys\ncounts, and there are no comments.\n\n%s",
                 configurationTable().c_str());
}

void checkConfiguration(const std::string& path) {
    const Configuration configuration =
        naming(path, [&] { return examineConfigurationFile(path); });
    reportProblems(path, configuration);
    if (!configuration.problems.empty()) throw CommandFailed{};
    std::printf("%s: %zu settings, nothing wrong\n", forTerminal(path).c_str(),
                configuration.keys.size());
}

void runProcess(const Arguments& arguments) {
    if (arguments.printConfig) return printConfiguration();
    if (!arguments.checked.empty()) return checkConfiguration(arguments.checked);
    if (arguments.input.empty()) {
        throw CLI::RequiredError("INPUT");
    }
    const InputFile input(arguments.input);
    requireSoundArguments(arguments, input);
    Run run(arguments, input);
    naming(input.name(), [&] { run.perform(); });
}

void addOutputOptions(CLI::App& command, Arguments& arguments) {
    command.add_option("-o,--output", arguments.output,
                       "Write the processed fields: .uf Universal Format, anything else a field "
                       "record file; of a volume one file a sweep");
    command.add_option("--points", arguments.points,
                       "Text file of points, range (m) and azimuth (degrees) on each line");
    command.add_option("--prefix", arguments.prefix,
                       "Append the samples at the points to PREFIX_zhh.dat, PREFIX_R.dat, ...");
    command
        .add_option("--plot", arguments.plot,
                    "Draw fields after processing: Zh, R, Ah, CCl, ...; several give panels")
        ->delimiter(',');
    command.add_option("--picture", arguments.picture,
                       "Picture: FILE.png, FILE.svg or FILE.pdf (default: named after OUT, else "
                       "INPUT_processed.png here)");
}

void addOptions(CLI::App& command, Arguments& arguments) {
    command.add_option("INPUT", arguments.input, "Radar file");
    command.add_option("--config", arguments.config,
                       "File of settings (default: those of --print-config)");
    command
        .add_option("--what", arguments.what,
                    "Stages (default: WHAT2DO of the settings, else all, 255)")
        ->check(CLI::Range(0, kAllStages));
    command
        .add_option("--freezing-level", arguments.freezingLevelM,
                    "Height of the freezing level above the antenna, m (default: of the settings)")
        ->check(isFinite);
    command.add_option("--map", arguments.map, "What fields are: ZD=zdr,ZT=zhh,XX=none");
    command.add_option("--min-snr", arguments.minSnrDb, "Lowest signal-to-noise ratio of echo, dB")
        ->check(isFinite);
    command.add_option("--radar-constant", arguments.radarConstantDb, "Calibration constant, dB")
        ->check(isFinite);
    command.add_option("--membership", arguments.membership,
                       "Directory of membership functions (default: CLUTTER_MFS of the settings, "
                       "else as for classify)");
    command.add_option("--sweep", arguments.sweep, "Only the sweep of this number");
    addLayoutOption(command, arguments.read);
    addOutputOptions(command, arguments);
    command.add_flag("--print-config", arguments.printConfig,
                     "Print an example of the settings; explanations go to standard error");
    command.add_option("--check-config", arguments.checked, "Report problems in a settings file");
    command.add_flag("-q,--quiet", arguments.quiet, "Print errors only");
}

/* An option that makes the command do something else. */
void requireAlone(const CLI::App& command, const std::string& name) {
    if (command.count(name) == 0) return;
    for (const CLI::Option* option : command.get_options())
        if (option->count() > 0 && !option->check_name(name))
            throw CLI::ValidationError(name, "cannot be combined with " + option->get_name());
}

}  // namespace

void addProcessCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "process", "Classify, smooth, correct attenuation and estimate rain by settings");
    command->footer(kFooter);
    const auto arguments = std::make_shared<Arguments>();
    addOptions(*command, *arguments);
    command->callback([arguments, command] {
        requireAlone(*command, "--print-config");
        requireAlone(*command, "--check-config");
        runProcess(*arguments);
    });
}

}  // namespace cli
