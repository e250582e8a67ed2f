/*
 * calibration.h - the noise floor of a sweep whose file has no calibration constant.
 *
 * The noise of a receiver is the same at every range, so in reflectivity it lies on a line
 * N0 + 20 log10(range in km). A sweep that still holds its noise gates shows N0 as the peak of
 * Z - 20 log10(range), at the same place in all rings that weather does not fill. Where the noise
 * was removed before, only echo is left, and the lower envelope of that quantity is the best
 * estimate.
 */
#ifndef SCAN_CLASSES_CALIBRATION_H
#define SCAN_CLASSES_CALIBRATION_H

#include <vector>

namespace scan {

enum class NoiseEvidence {
    kNoiseGates,     // the noise itself was found
    kLowerEnvelope,  // no noise in the sweep: the weakest echo
    kNothing         // too few values to say
};

struct Calibration {
    NoiseEvidence evidence = NoiseEvidence::kNothing;
    double radarConstantDb = 0;  // SNR = Z - 20 log10(range) + this; noise then has about 0 dB
    double minSnrDb = -500;      // lowest signal-to-noise ratio of an echo that fits the evidence
};

/* Signal-to-noise ratio that an echo needs to be classified, dB. Below it the textures are those of
 * the noise. */
constexpr double kEchoSnrDb = 10;

/*
 * Estimates from nrays x ngates reflectivities, dBZ (NaN: missing), with the range of gate g as
 * the classification takes it: g gate spacings, the first gate one spacing out. A value that many
 * gates share at the low end of the field stands for "no echo" and is ignored. The co-polar
 * correlation, where there is one (else empty), distinguishes widespread rain from noise.
 */
Calibration estimateCalibration(const std::vector<float>& reflectivity,
                                const std::vector<float>& correlation, int nrays, int ngates,
                                double gateSpacingM);

}  // namespace scan

#endif
