/* demo.cpp - the command `demo`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "clutterclassifier/classifier.hpp"
#include "clutterclassifier/clutterclassifier.h"
#include "options/membership_dir.h"
#include "picture/canvas.h"
#include "picture/picture.h"
#include "report/scores.h"
#include "report/terminal.h"
#include "scan/classes/classify_sweep.h"
#include "scan/classes/membership_files.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/writing/output_file.h"
#include "scan/synthetic/synthetic.h"
#include "scan/text.h"

namespace cli {

namespace {

constexpr int kRuns = 5;
constexpr int kPanels = 3, kNarrowestPx = kPanels * 240;

struct DemoArguments {
    std::string output = "clutterclassifier-demo.png";
    std::string scan;  // empty: not written
    std::string membership;
    std::string inputs;
    std::uint64_t seed = 5;
    int widthPx = 2160;
};

struct Verdict {
    std::vector<double> classes;
    double seconds;  // median of kRuns
};

void keepText(void* text, const char* message) {
    *static_cast<std::string*>(text) += message;
}

/* The entry point has no status: what it prints is why it did not classify. It prints nothing when
 * memory is short, and then leaves the classes untouched. */
double classifyOnce(scan::SyntheticScan& scan, const std::string& directory, int mask,
                    std::vector<double>& classes) {
    double params[3] = {scan.radarConstantDb, scan.minSnrDb, static_cast<double>(mask)};
    std::string complaint;
    const clutter::MessageSink listening(&keepText, &complaint);
    classes.assign(classes.size(), std::numeric_limits<double>::quiet_NaN());
    const auto start = std::chrono::steady_clock::now();
    clutterclassifier(directory.c_str(), scan.nrays, scan.ngates, scan.zhh.data(), scan.zdr.data(),
                      scan.phidp.data(), scan.rhohv.data(), scan.velocity.data(), scan.ldr.data(),
                      scan.likelihood.data(), scan.rangeM.data(), scan.azimuthDeg.data(),
                      &scan.elevationDeg, params, classes.data());
    const auto end = std::chrono::steady_clock::now();
    if (!complaint.empty()) {
        throw std::runtime_error(complaint.substr(0, complaint.find('\n')));
    }
    if (std::isnan(classes.front())) {
        throw std::bad_alloc();
    }
    return std::chrono::duration<double>(end - start).count();
}

Verdict classify(scan::SyntheticScan& scan, const std::string& directory, int mask) {
    Verdict verdict{std::vector<double>(scan.truth.size()), 0.0};
    std::vector<double> seconds;
    seconds.reserve(kRuns);
    for (int run = 0; run < kRuns; ++run) {
        seconds.push_back(classifyOnce(scan, directory, mask, verdict.classes));
    }
    std::sort(seconds.begin(), seconds.end());
    verdict.seconds = seconds[kRuns / 2];
    return verdict;
}

void printConfusion(const Confusion& confusion) {
    constexpr const char* kNames[] = {"precipitation", "ground clutter", "noise"};
    std::printf("  %-18s%15s%15s%15s\n", "truth \\ result", kNames[0], kNames[1], kNames[2]);
    for (int row = 0; row < 3; ++row) {
        std::printf("  %-18s", kNames[row]);
        for (const std::int64_t count : confusion[row]) {
            std::printf("%15lld", static_cast<long long>(count));
        }
        std::printf("\n");
    }
}

void printVerdict(const scan::SyntheticScan& scan, int mask, const Verdict& verdict) {
    const Confusion confusion = compare(scan.truth, verdict.classes);
    const Scores scores = scoresOf(confusion);
    std::printf("\n%s\n", scan::describeInputs(mask).c_str());
    printConfusion(confusion);
    std::printf("  POD %.3f   FAR %.3f   CSI %.3f   HSS %.3f   precipitation kept %.1f %%\n",
                scores.pod, scores.far, scores.csi, scores.hss, 100.0 * scores.kept);
    std::printf("  %.1f ms a scan (median of %d), %.1f million gates a second\n",
                1e3 * verdict.seconds, kRuns, 1e-6 * scan.truth.size() / verdict.seconds);
}

scan::Field asField(const char* name, const std::vector<double>& values, int wordsPerUnit = 100) {
    return {name, "", {values.begin(), values.end()}, wordsPerUnit};
}

/* The scan as a reader would return it. */
scan::Scan asScan(const scan::SyntheticScan& synthetic, std::uint64_t seed) {
    scan::Scan scan;
    scan.radarName = "Synthetic scan, seed " + std::to_string(seed);
    scan::Sweep sweep;
    sweep.number = 1;
    sweep.fixedAngleDeg = synthetic.elevationDeg;
    sweep.azimuthDeg = synthetic.azimuthDeg;
    sweep.elevationDeg.assign(synthetic.azimuthDeg.size(), synthetic.elevationDeg);
    sweep.nrays = synthetic.nrays;
    sweep.ngates = synthetic.ngates;
    sweep.gateSpacingM = synthetic.gateSpacingM;
    sweep.firstGateM = synthetic.rangeM.front();
    sweep.nyquist = synthetic.nyquist;
    sweep.fields = {asField("DZ", synthetic.zhh),       asField("DR", synthetic.zdr),
                    asField("PH", synthetic.phidp, 50), asField("RH", synthetic.rhohv, 10000),
                    asField("VR", synthetic.velocity),  asField("SW", synthetic.width),
                    asField("LD", synthetic.ldr)};
    scan.sweeps.push_back(std::move(sweep));
    return scan;
}

void drawDemo(const scan::Scan& scan, const scan::SyntheticScan& synthetic, const Verdict& verdict,
              const DemoArguments& arguments) {
    PictureOptions options;
    options.widthPx = arguments.widthPx;
    options.headings = {"Horizontal reflectivity", "Classified", "Truth"};
    drawPanels(scan, scan.sweeps[0],
               {asField("DBZH", synthetic.zhh), asField("CCl", verdict.classes),
                scan::Field{"CCl", "", synthetic.truth}},
               options, arguments.output);
}

/* The radar name of a file has eight letters, and readers expect a time. */
void writeScan(scan::Scan scan, const std::string& path) {
    if (path.empty()) {
        return;
    }
    scan.radarName = "DEMO";
    scan.time = {2000, 1, 1};
    scan::OutputFile file(path);
    scan::writeUniversalFormat(file, scan, nullptr);
    file.commit();
    std::printf("Scan: %s\n", forTerminal(path).c_str());
}

/* Two sets of inputs, or the one that the user names. */
std::vector<int> masksOf(const DemoArguments& arguments) {
    try {
        checkPictureEnding(arguments.output);
        if (arguments.inputs.empty()) {
            return {scan::kDefaultInputs, CLUTTER_TEXTURES};
        }
        return {scan::parseInputs(arguments.inputs) & scan::kDefaultInputs};
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(error.what());
    }
}

void requireUniversalFormat(const std::string& path) {
    const std::string ending = scan::endingOf(path);
    if (!path.empty() && ending != ".uf") {
        throw CLI::ValidationError("--scan", "must end in .uf");
    }
}

void runDemo(const DemoArguments& arguments) {
    const std::vector<int> masks = masksOf(arguments);
    requireUniversalFormat(arguments.scan);
    const std::string directory = membershipDirectory(arguments.membership);
    scan::SyntheticScan scan = scan::makeSyntheticScan(arguments.seed);
    std::printf("Synthetic scan, seed %llu: %d rays x %d gates of %.0f m, 0.5 deg elevation\n",
                static_cast<unsigned long long>(arguments.seed), scan.nrays, scan.ngates,
                scan.gateSpacingM);
    const int all = std::accumulate(masks.begin(), masks.end(), 0, std::bit_or<>());
    scan::requireMembershipFiles(directory, all);
    std::vector<Verdict> verdicts;
    for (const int mask : masks) {
        verdicts.push_back(classify(scan, directory, mask));
        printVerdict(scan, mask, verdicts.back());
    }
    const scan::Scan whole = asScan(scan, arguments.seed);
    drawDemo(whole, scan, verdicts.front(), arguments);
    std::printf("\nPicture (%s): %s\n", scan::describeInputs(masks.front()).c_str(),
                forTerminal(arguments.output).c_str());
    writeScan(whole, arguments.scan);
}

/* The parser turns numbers below 0, and too large ones, into the largest number. */
std::string isSeed(const std::string& text) {
    std::uint64_t seed = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, seed);
    if (result.ec == std::errc() && result.ptr == end) {
        return "";
    }
    return text + " is not a whole number from 0 to " + std::to_string(UINT64_MAX);
}

}  // namespace

void addDemoCommand(CLI::App& app) {
    auto arguments = std::make_shared<DemoArguments>();
    CLI::App* command = app.add_subcommand(
        "demo", "Classify a synthetic scan and compare the result with its known truth");
    command->add_option("-o,--output", arguments->output, "Picture: FILE.png, FILE.svg or FILE.pdf")
        ->capture_default_str();
    command->add_option("--scan", arguments->scan,
                        "Also write the scan itself: FILE.uf (Universal Format)");
    command->add_option("--seed", arguments->seed, "Another seed, another scan")
        ->check(isSeed)
        ->capture_default_str();
    command->add_option("--width", arguments->widthPx, "Width of the picture in pixels")
        ->check(CLI::Range(kNarrowestPx, 10000))
        ->capture_default_str();
    command->add_option("--inputs", arguments->inputs,
                        "Inputs to use, as for classify (default: all, then the textures alone)");
    command->add_option("--membership", arguments->membership,
                        "Directory of the membership functions");
    command->footer(
        "The event is ground clutter. POD is the share of it that was found, FAR the share of "
        "rain\n"
        "among the gates classified as clutter, CSI hits / (hits + misses + false alarms), HSS "
        "the\n"
        "Heidke skill score: the skill beyond chance (1 is perfect).");
    command->callback([arguments] { runDemo(*arguments); });
}

}  // namespace cli
