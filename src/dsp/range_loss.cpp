/*
 * The loss of each gate once, the ratio row by row.
 */
#include "dsp/range_loss.h"

#include <cmath>
#include <cstddef>

#include "base/kernel.h"

namespace clutter::dsp {

std::vector<float> rangeLossesDb(int ngates, float gateSizeM) {
    std::vector<float> losses(static_cast<std::size_t>(ngates));
    for (int g = 0; g < ngates; ++g) {
        const float spacings = static_cast<float>(g > 0 ? g : 1);
        const float rangeKm = spacings * gateSizeM / 1000.0f;
        losses[static_cast<std::size_t>(g)] =
            static_cast<float>(20.0 * std::log10(static_cast<double>(rangeKm)));
    }
    return losses;
}

CLUTTER_KERNEL void signalToNoise(const float* __restrict zhh, const float* __restrict lossesDb,
                                  float radarConstant, float* __restrict snr, int n) {
    for (int g = 0; g < n; ++g) {
        snr[g] = zhh[g] - lossesDb[g] + radarConstant;
    }
}

}  // namespace clutter::dsp
