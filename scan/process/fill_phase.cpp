/* Closes the gaps ray by ray. */
#include "scan/process/fill_phase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "scan/quantile.h"

namespace scan {
namespace {

int nextValue(const float* phase, int from, int ngates) {
    while (from < ngates && !std::isfinite(phase[from])) {
        ++from;
    }
    return from;
}

/* The gates between two that have a value. */
void interpolate(float* phase, int left, int right) {
    for (int g = left + 1; g < right; ++g) {
        const double share = static_cast<double>(g - left) / (right - left);
        phase[g] = static_cast<float>((1 - share) * phase[left] + share * phase[right]);
    }
}

/* Closes the gaps of one ray; false where there is no value to begin with. */
bool fillRay(float* phase, int ngates) {
    int left = nextValue(phase, 0, ngates);
    if (left == ngates) {
        return false;
    }
    std::fill(phase, phase + left, phase[left]);
    for (int right = 0; (right = nextValue(phase, left + 1, ngates)) < ngates; left = right) {
        interpolate(phase, left, right);
    }
    std::fill(phase + left + 1, phase + ngates, phase[left]);
    return true;
}

}  // namespace

EmptyRays fillPhaseGaps(float* phase, int nrays, int ngates) {
    const auto rayAt = [=](int r) { return phase + static_cast<std::ptrdiff_t>(r) * ngates; };
    EmptyRays empty;
    std::vector<float> firstValues;
    for (int r = 0; r < nrays; ++r) {
        if (fillRay(rayAt(r), ngates)) {
            firstValues.push_back(rayAt(r)[0]);
        } else {
            empty.rays.push_back(r);
        }
    }
    empty.phase = firstValues.empty() ? 0 : upperMedian(std::move(firstValues));
    for (const int r : empty.rays) {
        std::fill(rayAt(r), rayAt(r) + ngates, empty.phase);
    }
    return empty;
}

}  // namespace scan
