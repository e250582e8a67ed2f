/*
 * estimate_noise.h - the noise floor of sweeps whose file does not give it.
 *
 * The noise of a receiver is the same at every range, so in reflectivity it lies on a line
 * N0 + 20 log10(range in km). Sweeps that still hold their noise gates show N0 as the peak of
 * Z - 20 log10(range), at the same place in all rings that weather does not fill. There, nearly
 * every gate holds a value. Where the noise was removed before, only echo is left, and the lower
 * envelope of that quantity is the best estimate.
 */
#ifndef SCAN_NOISE_ESTIMATE_NOISE_H
#define SCAN_NOISE_ESTIMATE_NOISE_H

#include <vector>

#include "scan/noise/rings.h"

namespace scan {

enum class NoiseEvidence {
    kNoiseGates,     // the noise itself was found
    kLowerEnvelope,  // no noise in the sweeps: the weakest echo
    kNothing         // too few values to say
};

/* Every value is an echo. */
constexpr double kEveryValue = -500;

struct NoiseEstimate {
    NoiseEvidence evidence = NoiseEvidence::kNothing;
    double radarConstantDb = 0;     // SNR = Z - 20 log10(range) + this; noise then has about 0 dB
    double minSnrDb = kEveryValue;  // lowest signal-to-noise ratio of an echo by the evidence
    int agreeingRings = 0;          // rings that show this noise
    int rings = 0;                  // all rings that hold enough values
    int sweeps = 0;                 // that they are of
};

/* Signal-to-noise ratio that an echo needs to be classified, dB. Below it the textures are those of
 * the noise. */
constexpr double kEchoSnrDb = 10;

/* Noise fills at least this share of the gates beyond the weather. */
constexpr double kNoiseFills = 0.85;

/* One estimate from all sweeps together, which must be of one receiver and pulse. */
NoiseEstimate estimateNoise(const std::vector<NoiseInput>& sweeps);

}  // namespace scan

#endif
