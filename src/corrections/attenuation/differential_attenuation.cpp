/*
 * Differential attenuation of one ray, from its far end's differential reflectivity.
 */
#include <cmath>
#include <optional>

#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr int kFarGates = 20;
constexpr double kMinPhaseRiseDeg = 20.0;
constexpr double kFirstGamma = 0.01;
constexpr double kGammaStep = 0.001;
constexpr double kMaxLightRainZ = 100.0;  // 20 dBZ: drops are round
constexpr long long kMaxSteps = 50000000;

struct FarEnd {
    double z;
    double zdr;
};

/* Means over the last precipitation gates; no result when there are too few. */
std::optional<FarEnd> averageFarEnd(const double* z, const double* zdr, const double* mask, int n) {
    FarEnd sum{0.0, 0.0};
    int count = 0;
    for (int g = n - 1; g >= 0 && count < kFarGates; --g) {
        if (!(mask[g] == 0.0)) {
            continue;
        }
        sum.z += z[g];
        sum.zdr += zdr[g];
        ++count;
    }
    if (count < kFarGates) {
        return std::nullopt;
    }
    return FarEnd{sum.z / kFarGates, sum.zdr / kFarGates};
}

/* The expected differential reflectivity (dB) of rain with this reflectivity. */
double intrinsicZdr(double z) {
    return z > kMaxLightRainZ ? 0.48 * std::log10(z) - 0.774 : 0.0;
}

/* Steps gamma while the far end gets closer to the target and gamma stays positive. The last step,
 * which came no closer, is not undone. */
double fitGamma(double path, double alpha, double measured, double target) {
    double gamma = kFirstGamma, previous = 1e9;
    for (long long step = 0; step < kMaxSteps; ++step) {
        const double difference = 2.0 * gamma / alpha * path + measured - target;
        if (!(std::fabs(difference) < std::fabs(previous)) || !(gamma > 0.0)) {
            break;
        }
        gamma += difference <= 0.0 ? kGammaStep : -kGammaStep;
        previous = difference;
    }
    return gamma;
}

}  // namespace

int Cradarpro::Adp_optimal(const double* z, const double* zdr, const double* ah, int n, double dr,
                           double alphaOpt, double dphi, const double* mask, double* zdrcorr,
                           double& gamma, double& pida) {
    if (!(dphi > kMinPhaseRiseDeg)) {
        return 0;
    }
    const auto farEnd = averageFarEnd(z, zdr, mask, n);
    if (!farEnd) {
        return 0;
    }
    double path = 0.0;
    for (int g = 0; g < n; ++g) {
        path += ah[g] * dr;
    }
    const double fitted = fitGamma(path, alphaOpt, farEnd->zdr, intrinsicZdr(farEnd->z));
    if (fitted <= 0.0) {
        return 0;
    }

    gamma = fitted;
    double attenuation = 0.0;
    for (int g = 0; g < n; ++g) {
        attenuation += 2.0 * fitted / alphaOpt * ah[g] * dr;
        zdrcorr[g] = mask[g] == 0.0 ? attenuation + zdr[g] : zdr[g];
    }
    pida = attenuation;
    return 1;
}
