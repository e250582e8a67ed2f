/*
 * Any bytes as a file: sweeps, their classes, and both written and read again. The first byte
 * chooses how.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "fuzz/scan/sound_scan.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "scan/class_codes.h"
#include "scan/classes/classify_sweep.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/write_classes.h"
#include "scan/process/process_sweep.h"
#include "support/directories.h"

namespace {

using namespace clutter::fuzz;

/* Larger scans take longer than there is to learn from them. */
constexpr std::size_t kMaxCells = 20000;

scan::ClassifyOptions optionsOf(int choice) {
    scan::ClassifyOptions options;
    options.membership = kMembershipDirectory;
    options.allClasses = (choice & 1) != 0;
    options.removeIsolated = (choice & 2) != 0;
    return options;
}

void requireClasses(const scan::ClassifiedSweep& result, const scan::Sweep& sweep) {
    require(result.classes.size() == cellsOf(sweep), "a class for every gate");
    std::size_t gates = 0;
    for (const float code : result.classes) {
        const bool known = std::find(std::begin(scan::kClassCodes), std::end(scan::kClassCodes),
                                     code) != std::end(scan::kClassCodes);
        require(known || std::isnan(code), "a class is one of five, or none");
        gates += known ? 1 : 0;
    }
    require(static_cast<std::size_t>(result.gates()) == gates, "classes are counted");
}

/* What was written as Universal Format or field records has the same sweeps. */
void writeAndRead(const scan::Scan& scan, const std::string& ending) {
    const std::string path = scratch().file("written" + ending);
    const scan::WrittenFiles files = scan::writeScan(path, scan);
    for (const std::string& file : files.paths) {
        const scan::Scan back = scan::readScan(file);
        requireSound(back);
        const bool whole = files.paths.size() == 1;
        require(!whole || back.sweeps.size() == scan.sweeps.size(), "no sweep is lost");
        require(!whole || back.sweeps[0].nrays == scan.sweeps[0].nrays, "no ray is lost");
    }
}

/* Every step may refuse with a reason. */
template <class Step>
void attempt(Step step) {
    try {
        step();
    } catch (const std::runtime_error& error) {
        require(error.what()[0] != '\0', "a refusal has a reason");
    }
}

void classify(const scan::Scan& scan, const scan::Sweep& sweep, int choice) {
    requireClasses(scan::classifySweep(scan, sweep, optionsOf(choice)), sweep);
}

void process(const scan::Scan& scan, const scan::Sweep& sweep, int choice) {
    scan::ProcessOptions options;
    options.classify = optionsOf(choice);
    options.what = choice & 31;
    requireSound(scan::processSweep(scan, sweep, options).sweep);
}

bool isSmall(const scan::Scan& scan) {
    std::size_t cells = 0;
    for (const scan::Sweep& sweep : scan.sweeps) {
        cells += cellsOf(sweep) * sweep.fields.size();
    }
    return cells <= kMaxCells;
}

/* One of four things that are done with scans. */
void use(const scan::Scan& scan, int choice) {
    if (choice >= 128) {
        return writeAndRead(scan, (choice & 64) != 0 ? ".uf" : ".plv");
    }
    for (const scan::Sweep& sweep : scan.sweeps) {
        attempt([&] {
            (choice & 64) != 0 ? classify(scan, sweep, choice) : process(scan, sweep, choice);
        });
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) {
        return 0;
    }
    const int choice = data[0];
    const std::string path = inputFile(data + 1, size - 1);
    scan::ReadOptions read;
    const int layouts[] = {0, 252, 260, 280};
    read.polarLayout = layouts[choice >> 4 & 3];
    read.keepNoEcho = (choice & 8) != 0;
    attempt([&] {
        const scan::Scan scan = scan::readScan(path, read);
        requireSound(scan);
        if (isSmall(scan)) {
            use(scan, choice);
        }
    });
    return 0;
}
