/* picture_sweep.h - sweeps to be drawn, by their azimuths. */
#ifndef CLUTTER_TESTS_CLI_PICTURE_SWEEP_H
#define CLUTTER_TESTS_CLI_PICTURE_SWEEP_H

#include <utility>
#include <vector>

#include "scan/scan.h"

inline scan::Sweep sweepOf(std::vector<double> azimuthDeg, int ngates, double spacingM) {
    scan::Sweep sweep;
    sweep.azimuthDeg = std::move(azimuthDeg);
    sweep.nrays = static_cast<int>(sweep.azimuthDeg.size());
    sweep.elevationDeg.assign(sweep.azimuthDeg.size(), 0.5);
    sweep.ngates = ngates;
    sweep.gateSpacingM = spacingM;
    return sweep;
}

#endif
