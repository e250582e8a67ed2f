#include "fill_phase.h"

#include <algorithm>
#include <cmath>

namespace scan {
namespace {

int nextValue(const float* phase, int from, int ngates) {
    while (from < ngates && !std::isfinite(phase[from])) ++from;
    return from;
}

/* The gates between two that have a value. */
void interpolate(float* phase, int left, int right) {
    for (int g = left + 1; g < right; ++g) {
        const double share = static_cast<double>(g - left) / (right - left);
        phase[g] = static_cast<float>((1 - share) * phase[left] + share * phase[right]);
    }
}

}  // namespace

bool fillPhaseGaps(float* phase, int ngates) {
    int left = nextValue(phase, 0, ngates);
    if (left == ngates) {
        std::fill(phase, phase + ngates, 0.0F);
        return false;
    }
    std::fill(phase, phase + left, phase[left]);
    for (int right = 0; (right = nextValue(phase, left + 1, ngates)) < ngates; left = right)
        interpolate(phase, left, right);
    std::fill(phase + left + 1, phase + ngates, phase[left]);
    return true;
}

}  // namespace scan
