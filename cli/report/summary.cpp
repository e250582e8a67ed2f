/* summary.cpp - fields, calibration, classes and speed of classified sweeps, for people. */
#include "report/summary.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "report/terminal.h"

namespace cli {

namespace {

void printLabel(const char* label) {
    std::printf("    %-12s ", label);
}

void printClass(const char* name, long count, long gates) {
    const double share =
        gates > 0 ? 100.0 * static_cast<double>(count) / static_cast<double>(gates) : 0.0;
    std::printf("    %-15s %9ld gates %6.2f %%", name, count, share);
}

/* The classes of one sweep or of all sweeps. Sea and turbine clutter only where there is any. */
template <class Counts>
void printClasses(const Counts& counts, const std::string& remark) {
    const long gates = counts.precipitation + counts.groundClutter + counts.seaClutter +
                       counts.turbineClutter + counts.noise;
    printClass("precipitation", counts.precipitation, gates);
    std::printf("\n");
    printClass("ground clutter", counts.groundClutter, gates);
    std::printf("\n");
    if (counts.seaClutter + counts.turbineClutter > 0) {
        printClass("sea clutter", counts.seaClutter, gates);
        std::printf("\n");
        printClass("turbine clutter", counts.turbineClutter, gates);
        std::printf("\n");
    }
    printClass("noise", counts.noise, gates);
    std::printf("%s\n", remark.c_str());
}

void printSpeed(long gates, double seconds) {
    const double rate = seconds > 0 ? static_cast<double>(gates) / seconds / 1e6 : 0;
    printLabel("time");
    std::printf("%.2f ms, %.1f million gates/s\n", 1000 * seconds, rate);
}

void printFieldsUsed(const scan::ClassifiedSweep& result) {
    printLabel("fields");
    bool first = true;
    for (int i = 0; i < scan::kRoleCount; ++i) {
        const auto role = static_cast<scan::Role>(i);
        if (!result.fields[role] || !scan::takesPart(role, result.mask)) {
            continue;
        }
        std::printf("%s%s %s", first ? "" : ", ", scan::roleInfo(role).key,
                    forTerminal(result.fields[role]->name).c_str());
        first = false;
    }
    std::printf("\n");
    printLabel("inputs");
    std::printf("%s\n", scan::describeInputs(result.mask).c_str());
}

void printEstimate(const scan::Calibration& calibration) {
    constexpr char kOverride[] = "(override with --radar-constant)";
    switch (calibration.evidence) {
        case scan::NoiseEvidence::kNoiseGates:
            std::printf(
                "no calibration constant in the file: estimated %.1f dB from the noise in "
                "the scan %s\n",
                calibration.radarConstantDb, kOverride);
            return;
        case scan::NoiseEvidence::kLowerEnvelope:
            std::printf(
                "no calibration constant in the file: the noise seems to have been removed; "
                "estimated %.1f dB from the weakest echo %s\n",
                calibration.radarConstantDb, kOverride);
            return;
        case scan::NoiseEvidence::kNothing:
            std::printf(
                "no calibration constant in the file and too few values to estimate one: "
                "every value counts as echo %s\n",
                kOverride);
    }
}

void printCalibration(const scan::ClassifiedSweep& result) {
    printLabel("calibration");
    if (result.source == scan::ConstantSource::kEstimate) {
        printEstimate(result.calibration);
    } else {
        std::printf("%.1f dB, %s\n", result.calibration.radarConstantDb,
                    result.source == scan::ConstantSource::kUser ? "as given" : "from the file");
    }
    printLabel("echo");
    if (result.calibration.minSnrDb < -300) {
        std::printf("wherever there is a value\n");
    } else {
        std::printf("where SNR >= %.1f dB\n", result.calibration.minSnrDb);
    }
}

}  // namespace

void Totals::add(const scan::ClassifiedSweep& result) {
    precipitation += result.precipitation;
    groundClutter += result.groundClutter;
    seaClutter += result.seaClutter;
    turbineClutter += result.turbineClutter;
    noise += result.noise;
    seconds += result.seconds;
    ++sweeps;
}

void printScanLine(const scan::Scan& scan) {
    const scan::DateTime& t = scan.time;
    std::printf("%s: %s, %04d-%02d-%02d %02d:%02d:%02d, %zu sweep%s\n",
                forTerminal(scan.path).c_str(), scan.format.c_str(), t.year, t.month, t.day, t.hour,
                t.minute, t.second, scan.sweeps.size(), scan.sweeps.size() == 1 ? "" : "s");
}

void printSweep(const scan::Sweep& sweep, const scan::ClassifiedSweep& result) {
    std::printf("  sweep %d: %s %.1f deg, %d ray%s x %d gates of %.0f m\n", sweep.number,
                sweep.rhi ? "RHI" : "PPI", sweep.fixedAngleDeg, sweep.nrays,
                sweep.nrays == 1 ? "" : "s", sweep.ngates, sweep.gateSpacingM);
    printFieldsUsed(result);
    printCalibration(result);
    for (const std::string& note : result.notes) {
        printLabel("note");
        std::printf("%s\n", forTerminal(note).c_str());
    }
    std::string remark;
    if (result.withoutValue > 0) {
        remark = "  (" + std::to_string(result.withoutValue) + " without a reflectivity)";
    }
    printClasses(result, remark);
    printSpeed(result.gates(), result.seconds);
}

void printTotals(const Totals& totals) {
    if (totals.sweeps < 2) {
        return;
    }
    std::printf("total: %d sweeps of %d file%s\n", totals.sweeps, totals.files,
                totals.files == 1 ? "" : "s");
    printClasses(totals, "");
    printSpeed(totals.precipitation + totals.groundClutter + totals.seaClutter +
                   totals.turbineClutter + totals.noise,
               totals.seconds);
}

}  // namespace cli
