/* summary.cpp - fields, calibration, classes and speed of classified sweeps, for people. */
#include "report/summary.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "report/notes.h"
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

void printNoiseFloor(const scan::NoiseFloor& noise) {
    printLabel("noise");
    const char* hint =
        noise.source == scan::NoiseSource::kEstimate ? " (override with --radar-constant)" : "";
    std::printf("%s%s\n", forTerminal(describeNoise(noise)).c_str(), hint);
    printLabel("echo");
    if (noise.minSnrDb < -300) {
        std::printf("wherever there is a value\n");
    } else {
        std::printf("where SNR >= %.1f dB\n", noise.minSnrDb);
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

void Totals::add(const Totals& other) {
    precipitation += other.precipitation;
    groundClutter += other.groundClutter;
    noise += other.noise;
    seaClutter += other.seaClutter;
    turbineClutter += other.turbineClutter;
    seconds += other.seconds;
    sweeps += other.sweeps;
    files += other.files;
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
    printNoiseFloor(result.noiseFloor);
    printRemarks(result);
    std::string remark;
    if (result.withoutValue > 0) {
        remark = "  (" + std::to_string(result.withoutValue) + " without a reflectivity)";
    }
    printClasses(result, remark);
    printSpeed(result.gates(), result.seconds);
}

void printRemarks(const scan::ClassificationPlan& plan) {
    for (const std::string& warning : plan.warnings) {
        printDetail("warning", warning);
    }
    for (const std::string& note : plan.notes) {
        printDetail("note", note);
    }
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
