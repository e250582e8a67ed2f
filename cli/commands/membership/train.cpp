/* train.cpp - the command `membership train`. */
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

#include "commands/membership/membership.h"
#include "options/classify_options.h"
#include "options/input_file.h"
#include "options/membership_dir.h"
#include "options/selection.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/terminal.h"
#include "scan/classes/inputs.h"
#include "scan/membership/train.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

struct TrainArguments {
    std::vector<std::string> inputs, clearAir;
    std::string output, label, weather;
    std::optional<int> sweep;
    double prior = scan::TrainOptions().prior;
    ClassifyArguments how;
};

scan::LabelRule labelRule(const TrainArguments& arguments) {
    try {
        return scan::LabelRule(arguments.label, arguments.weather);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--label, --weather", error.what());
    }
}

scan::LabelledScan readLabelled(const std::string& name, const TrainArguments& arguments,
                                const scan::LabelRule& rule) {
    const InputFile input(name);
    return naming(input.name(), [&] {
        const scan::Scan scan = readInput(input, {});
        noteDamage(scan, Beside::kErrors);
        return labelledScan(scan, findSweep(scan, arguments.sweep),
                            classifyOptionsFrom(arguments.how), rule);
    });
}

void requireEmpty(const std::string& directory) {
    std::error_code error;
    if (fs::exists(directory, error) &&
        !(fs::is_directory(directory, error) && fs::is_empty(directory, error))) {
        throw FileError(directory + ": exists and is not an empty directory");
    }
}

void printScores(const std::vector<scan::ScanScores>& scores) {
    std::printf(
        "\nOn sectors of ten rays that took no part in the training:\n"
        "  kept  strict  found    HSS  strict    1:9  clutter  weather  beside\n");
    for (const scan::ScanScores& scan : scores) {
        const scan::TrainScores& s = scan.scores;
        std::printf(" %5.3f   %5.3f  %5.3f  %5.3f   %5.3f  %5.3f  %7ld  %7ld %7ld  %s\n", s.kept,
                    s.keptStrict, s.found, s.hss, s.hssStrict, s.hssOneToNine, scan.clutter,
                    scan.weather, scan.beside, forTerminal(scan.name).c_str());
    }
    std::printf(
        "kept: share of weather that stays precipitation; found: share of clutter; HSS: Heidke\n"
        "skill score, 1:9 as if clutter were a tenth; strict: with the weather beside clutter.\n");
}

void printInputs(const std::vector<scan::TrainedInput>& inputs) {
    std::printf("\n  input          weight   lean\n");
    for (const scan::TrainedInput& one : inputs) {
        std::printf("  %-13s  %6.2f  %5.2f\n",
                    scan::inputs()[static_cast<std::size_t>(one.input)].info->name,
                    one.weight.weight, one.weight.lean);
    }
}

/* Tables of the quantities that no scan had. */
std::string copyOthers(const scan::Training& training, const std::string& from,
                       const std::string& to) {
    std::set<std::string> trained;
    for (const scan::TrainedInput& one : training.inputs) {
        trained.insert(scan::inputs()[static_cast<std::size_t>(one.input)].info->tag);
    }
    std::string copied;
    for (const scan::Input& input : scan::inputs()) {
        if (input.info->tag == nullptr || trained.count(input.info->tag) > 0) {
            continue;
        }
        for (int c = 0; c < scan::kTableClasses; ++c) {
            const std::string name =
                scan::tableFileName(input.info->tag, static_cast<scan::TableClass>(c));
            fs::copy_file(fs::path(from) / name, fs::path(to) / name);
        }
        copied += std::string(" ") + input.info->tag;
    }
    return copied;
}

void runTrain(const TrainArguments& arguments) {
    const scan::ClassifyOptions how = classifyOptionsFrom(arguments.how);
    const scan::LabelRule rule = labelRule(arguments);
    requireEmpty(arguments.output);
    std::vector<scan::LabelledScan> scans;
    for (const std::string& name : arguments.inputs) {
        scans.push_back(readLabelled(name, arguments, rule));
    }
    for (const std::string& name : arguments.clearAir) {
        scans.push_back(readLabelled(name, arguments, scan::LabelRule("all")));
    }
    const scan::Training training = trainMembership(scans, {how.neighbourhood, arguments.prior});
    printInputs(training.inputs);
    printScores(training.unused);
    std::printf("\n");
    for (const scan::LabelledScan& scan : scans) {
        printNotes(scan.notes);
    }
    for (const std::string& warning : training.warnings) {
        std::printf("  warning: %s\n", forTerminal(warning).c_str());
    }
    fs::create_directories(arguments.output);
    const auto files = writeTables(training.inputs, arguments.output);
    const std::string others = membershipDirectory(arguments.how.membership);
    const std::string copied = copyOthers(training, others, arguments.output);
    std::printf("  wrote %d tables to %s\n", static_cast<int>(files.size()),
                forTerminal(arguments.output).c_str());
    if (!copied.empty()) {
        std::printf("  as in %s:%s\n", forTerminal(others).c_str(), copied.c_str());
    }
}

}  // namespace

void addTrainCommand(CLI::App& membership) {
    auto arguments = std::make_shared<TrainArguments>();
    CLI::App* command =
        membership.add_subcommand("train", "Make membership functions from labelled scans");
    command->add_option("LABELLED", arguments->inputs, "Radar files whose gates --label labels")
        ->required();
    command
        ->add_option("--label", arguments->label,
                     "What is clutter: FIELD (not 0), FIELD>NUMBER, or FIELD-FIELD>NUMBER, the "
                     "difference that a clutter filter makes")
        ->required();
    command->add_option("--weather", arguments->weather,
                        "What is weather, FIELD-FIELD<NUMBER or as above (default: what is not "
                        "clutter; less than a fifth of a difference)");
    command->add_option("--clear-air", arguments->clearAir,
                        "Radar files of clear air: every echo is clutter");
    command->add_option("-o,--output", arguments->output, "Directory to write, new or empty")
        ->required();
    command->add_option("--prior", arguments->prior, "Share of clutter among all echoes")
        ->check(CLI::Range(0.01, 0.99))
        ->capture_default_str();
    command->add_option("--sweep", arguments->sweep, "Number of the sweep (default: the first)");
    addInputOptions(*command, arguments->how);
    addFieldOptions(*command, arguments->how);
    command->footer(
        "Examples:\n"
        "  clutterclassifier membership train scan.uf --label CM --weather 'ZT-DZ<2' -o mine\n"
        "  clutterclassifier membership train a.uf b.uf --label 'ZT-DZ>10' -o mine");
    command->callback([arguments] { runTrain(*arguments); });
}

}  // namespace cli
