/* rings.h - a sweep cut into rings, each with the levels that a noise floor would show in. */
#ifndef SCAN_NOISE_RINGS_H
#define SCAN_NOISE_RINGS_H

#include <cstddef>
#include <vector>

namespace scan {

/* What the noise of one sweep is estimated from. The range of gate g is g gate spacings, the first
 * gate one spacing out, as the classification takes it. */
struct NoiseInput {
    const std::vector<float>& reflectivity;  // nrays x ngates, dBZ; NaN: missing
    const std::vector<float>* correlation;   // co-polar; null: unknown
    int nrays, ngates;
    double gateSpacingM;
    const std::vector<int>* rayGates = nullptr;  // gates of each ray; null: ngates
};

constexpr std::size_t kMinRingValues = 40;  // a ring with fewer is ignored

/* The gates of all rays between two ranges. */
struct Ring {
    double spreadingDb = 0;                     // 20 log10(range in km) of its middle
    std::vector<double> levels;                 // Z - 20 log10(range) of its gates
    std::vector<float> correlation;             // of the same gates; empty when there is none
    double filled = 0;                          // share of its gates that hold a value
    std::vector<int> inBin;                     // histogram of the levels
    double median = 0, weak = 0, envelope = 0;  // their quantiles
};

/* The level that most of a ring's values lie near: the lowest, where two are similarly common. */
double lowestPeak(const Ring& ring);

/* A quantile of values that are not empty. */
double quantile(std::vector<double> values, double share);

/* A value that many gates share at the low end of the field stands for "no echo" and is ignored.
 * Rings without enough values are left out, as is the nearest part of the sweep. */
std::vector<Ring> collectRings(const NoiseInput& sweep);

/* Share of the gates in the outer half of the rays that hold a value; 0 without gates. */
double filledShareOutside(const NoiseInput& sweep);

}  // namespace scan

#endif
