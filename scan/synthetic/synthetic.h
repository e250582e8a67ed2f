/*
 * synthetic.h - a synthetic dual-polarisation scan whose truth is known at every gate.
 *
 * What is at a gate (rain, ground clutter or specks, receiver noise) is a sum of independent
 * echoes, each with a power, a differential reflectivity, a differential phase, a correlation, a
 * velocity and a width. The radar's estimates are then drawn as those of kSamples independent
 * samples of that sum, so that their scatter follows from the correlation and the signal-to-noise
 * ratio as in a real radar, and mixtures of rain and clutter come out by themselves.
 */
#ifndef SCAN_SYNTHETIC_SYNTHETIC_H
#define SCAN_SYNTHETIC_SYNTHETIC_H

#include <cstdint>
#include <vector>

namespace scan {

/* All fields hold nrays x ngates values, ray after ray, in the units of clutterclassifier(). */
struct SyntheticScan {
    int nrays = 0, ngates = 0;
    double gateSpacingM = 0, nyquist = 0, elevationDeg = 0;
    double radarConstantDb = 0;  // SNR = Z - 20 log10(range in km) + constant
    double minSnrDb = 0;         // below it a gate is noise
    std::vector<double> rangeM, azimuthDeg;
    std::vector<double> zhh, zdr, phidp, rhohv, velocity, width;
    std::vector<double> ldr;         // NaN where the cross-polar echo is lost in noise
    std::vector<double> likelihood;  // clutter likelihood: a clutter map of other days
    /* As the library codes classes: 3 noise, where rain and clutter together stay below minSnrDb,
     * else the stronger of the two: 0 precipitation, 5 clutter. */
    std::vector<float> truth;
};

/* The same seed gives the same scan everywhere (except for the rounding of the system's elementary
 * functions). Throws std::invalid_argument unless nrays and ngates are at least 1. */
SyntheticScan makeSyntheticScan(std::uint64_t seed, int nrays = 360, int ngates = 1000);

}  // namespace scan

#endif
