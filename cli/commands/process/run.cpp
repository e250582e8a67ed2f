/* run.cpp - reads a file, processes its sweeps, and writes, draws and samples the results. */
#include "commands/process/run.h"

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "clutterclassifier/clutterclassifier.h"
#include "commands/process/settings.h"
#include "options/selection.h"
#include "output/process_output.h"
#include "picture/picture.h"
#include "report/documents.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/summary.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/output_file.h"
#include "scan/quiet_library.h"
#include "scan/text.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

bool isUniversalFormat(const std::string& path) {
    return scan::endingOf(path) == ".uf";
}

}  // namespace

ProcessRun::ProcessRun(const ProcessCall& call, const InputFile& input)
    : call_(call), input_(input), options_(processOptionsFrom(call)), progress_(talks()) {}

void ProcessRun::perform() {
    if (!call_.points.empty()) {
        readPointList();
    }
    scan_ = readInput(input_, call_.read);
    sweeps_ = findSweeps(scan_, call_.sweep);
    scan::NoiseEstimates estimates(scan_, options_.classify.map);
    options_.classify.estimates = &estimates;
    if (talks()) {
        printScanLine(scan_);
    }
    noteDamage(scan_, talks() ? Beside::kResults : Beside::kErrors);
    for (std::size_t s = 0; s < sweeps_.size(); ++s) {
        progress_.show(static_cast<int>(s), static_cast<int>(sweeps_.size()),
                       input_.name() + " sweep " + std::to_string(s + 1));
        processed_.push_back(process(*sweeps_[s]));
    }
    progress_.clear();
    write();
    if (call_.json) {
        printDocument();
    }
}

void ProcessRun::printDocument() const {
    JsonObject object = scanObject(scan_);
    std::vector<JsonObject> sweeps;
    for (std::size_t s = 0; s < sweeps_.size(); ++s) {
        JsonObject sweep = classifiedObject(*sweeps_[s], processed_[s].classified);
        sweep.add("stages", processed_[s].what);
        sweep.add("freezing_level_m", static_cast<double>(processed_[s].freezingLevelM));
        sweeps.push_back(sweep);
    }
    object.add("sweeps", sweeps);
    object.addList("outputs", pathsFor(call_.output));
    object.print();
}

void ProcessRun::readPointList() {
    points_ = naming(call_.points, [&] { return scan::readPoints(call_.points); });
    const fs::path directory = fs::path(call_.prefix).parent_path();
    if (!directory.empty() && !fs::is_directory(directory)) {
        throw FileError(directory.string() + ": no such directory");
    }
}

scan::ProcessedSweep ProcessRun::process(const scan::Sweep& sweep) {
    progress_.clear();
    if (!talks()) {
        const scan::QuietLibrary quiet;  // it prints its stages to standard output
        return processSweep(scan_, sweep, options_);
    }
    scan::ProcessedSweep processed = processSweep(scan_, sweep, options_);
    report(sweep, processed);
    return processed;
}

void ProcessRun::report(const scan::Sweep& sweep, const scan::ProcessedSweep& processed) const {
    if ((processed.what & scan::kClassifyStage) != 0) {
        printSweep(sweep, processed.classified);
    } else {
        std::printf("  sweep %d\n", sweep.number);
        printRemarks(processed.classified);
    }
    if ((processed.what & (scan::kAttenuationStage | scan::kRainStage)) != 0) {
        std::printf("    freezing     level %.0f m above the antenna\n", processed.freezingLevelM);
    }
    if (processed.seed) {
        std::printf("    attenuation  coefficients searched with seed %u\n",
                    static_cast<unsigned>(*processed.seed));
    }
    if (sweep.rhi) {
        std::printf("    note         one elevation, %.1f deg, is used for all rays\n",
                    middleElevationDeg(sweep));
    }
}

/* Names of one kind of result, one for each sweep. */
std::vector<std::string> ProcessRun::pathsFor(const std::string& path) const {
    if (path.empty()) {
        return {};
    }
    return scan::sweepPaths(path, scan_, sweeps_);
}

/* All files are complete before the first one takes its name. */
void ProcessRun::write() {
    const std::vector<std::string> outputs = pathsFor(call_.output);
    const std::vector<std::string> pictures = pathsFor(picturePath(call_, input_));
    const auto writer =
        isUniversalFormat(call_.output) ? writeProcessedWords : writeProcessedRecords;
    std::vector<std::unique_ptr<scan::OutputFile>> files;
    for (std::size_t s = 0; s < outputs.size(); ++s) {
        files.push_back(std::make_unique<scan::OutputFile>(outputs[s]));
        const std::vector<std::string> notes = writer(*files.back(), scan_, processed_[s]);
        if (talks()) {
            printNotes(notes);
        }
    }
    for (std::size_t s = 0; s < pictures.size(); ++s) {
        draw(processed_[s], pictures[s]);
    }
    for (const auto& file : files) {
        file->commit();
    }
    if (talks()) {
        announce(outputs);
        announce(pictures);
    }
    if (!call_.prefix.empty()) {
        sample();
    }
}

void ProcessRun::draw(const scan::ProcessedSweep& processed, const std::string& path) const {
    std::vector<scan::Field> fields;
    for (const std::string& name : call_.plot) {
        fields.push_back(processedField(processed, name));
    }
    drawPanels(scan_, processed.sweep, fields, {}, path);
}

void ProcessRun::sample() {
    const std::vector<std::string> prefixes = pathsFor(call_.prefix);
    for (std::size_t s = 0; s < prefixes.size(); ++s) {
        std::vector<std::string> written;
        const std::size_t outside =
            appendSamples(prefixes[s], scan_.time, processed_[s], points_, written);
        if (!talks()) {
            continue;
        }
        announce(written);
        if (outside > 0) {
            printNote(std::to_string(outside) + " of " + std::to_string(points_.size()) +
                      " points are outside the sweep and get the value of the nearest gate");
        }
    }
}

}  // namespace cli
