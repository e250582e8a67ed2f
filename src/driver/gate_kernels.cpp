/*
 * Loops over the gates of a ray.
 */
#include "driver/gate_kernels.h"

#include "base/kernel.h"
#include "driver/echo_class.h"
#include "fuzzy/classifiers/precipitation_clutter.h"

namespace clutter::driver {

CLUTTER_KERNEL void markNoise(const float* __restrict snr, float minSnr, float* __restrict cls,
                              int n) {
    for (int g = 0; g < n; ++g) {
        cls[g] = minSnr > snr[g] ? kNoiseClass : kPrecipitationClass;
    }
}

CLUTTER_KERNEL int countEchoes(const float* cls, int n) {
    int count = 0;
    for (int g = 0; g < n; ++g) {
        count += cls[g] != kNoiseClass ? 1 : 0;
    }
    return count;
}

CLUTTER_KERNEL void applyVerdicts(const float* __restrict before, const float* __restrict verdicts,
                                  float* __restrict after, int n) {
    for (int g = 0; g < n; ++g) {
        const float echo =
            verdicts[g] == fuzzy::kGroundClutter ? kGroundClutterClass : kPrecipitationClass;
        after[g] = before[g] == kNoiseClass ? before[g] : echo;
    }
}

CLUTTER_KERNEL void narrow(const double* __restrict from, float* __restrict to, int n) {
    for (int i = 0; i < n; ++i) {
        to[i] = static_cast<float>(from[i]);
    }
}

CLUTTER_KERNEL void widen(const float* __restrict from, double* __restrict to, int n) {
    for (int i = 0; i < n; ++i) {
        to[i] = static_cast<double>(from[i]);
    }
}

}  // namespace clutter::driver
