/* small_scan.h - a scan of a few gates with fields of every kind, for seeds. */
#ifndef CLUTTER_FUZZ_SUPPORT_SMALL_SCAN_H
#define CLUTTER_FUZZ_SUPPORT_SMALL_SCAN_H

#include <vector>

#include "scan/scan.h"
#include "scan/synthetic/synthetic.h"

namespace clutter::fuzz {

inline scan::Scan smallScan() {
    constexpr int kRays = 8, kGates = 20;
    const scan::SyntheticScan made = scan::makeSyntheticScan(5, kRays, kGates);
    const auto narrowed = [](const std::vector<double>& values) {
        return std::vector<float>(values.begin(), values.end());
    };
    scan::Sweep sweep;
    sweep.nrays = kRays;
    sweep.ngates = kGates;
    sweep.azimuthDeg = made.azimuthDeg;
    sweep.elevationDeg.assign(kRays, made.elevationDeg);
    sweep.fixedAngleDeg = made.elevationDeg;
    sweep.gateSpacingM = made.gateSpacingM;
    sweep.firstGateM = made.rangeM[0];
    sweep.nyquist = made.nyquist;
    sweep.fields = {{"DZ", "dBZ", narrowed(made.zhh)},      {"DR", "dB", narrowed(made.zdr)},
                    {"PH", "deg", narrowed(made.phidp)},    {"RH", "-", narrowed(made.rhohv)},
                    {"VR", "m/s", narrowed(made.velocity)}, {"CC", "-", made.truth}};
    scan::Scan scan;
    scan.beamWidthDeg = 1;
    scan.latitudeDeg = 50.5;
    scan.longitudeDeg = 7.25;
    scan.sweeps = {sweep};
    return scan;
}

}  // namespace clutter::fuzz

#endif
