/*
 * Averages of a vertical scan, for the calibration of differential reflectivity.
 */
#include <algorithm>
#include <iterator>

#include "base/array.h"
#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr float kNoResult = -99.0f;

struct GateRange {
    int first;
    int last;
};

/* Single-precision sum in ray, gate order. */
float sumGates(const float* field, int ngates, int nrays, GateRange gates, bool onlyPositive) {
    if (field == nullptr) {
        return 0.0f;
    }
    float sum = 0.0f;
    const int last = std::min(gates.last, ngates - 1);
    for (int r = 0; r < nrays; ++r) {
        const float* ray = field + clutter::base::cellCount(ngates, r);
        for (int g = std::max(gates.first, 0); g <= last; ++g) {
            if (!onlyPositive || ray[g] > 0.0f) {
                sum += ray[g];
            }
        }
    }
    return sum;
}

}  // namespace

void Cradarpro::CalibrationAt90deg(float* f1, float* f2, float* f3, float* f4, float* f5, float* f6,
                                   int ngates, int nrays, int g0, int g1, float* out) {
    if (out == nullptr) {
        return;
    }
    out[0] = kNoResult;  // the other elements do not change, as hosts expect
    if ((g0 == 0 && g1 == 0) || g0 >= g1 || ngates < 1 || nrays < 1) {
        return;
    }
    const long long gates = static_cast<long long>(g1) - g0 + 1;
    const float divisor = static_cast<float>(gates * nrays);
    const float* fields[] = {f1, f2, f3, f4, f5, f6};
    for (std::size_t k = 0; k < std::size(fields); ++k) {
        out[k] = sumGates(fields[k], ngates, nrays, {g0, g1}, k == 0) / divisor;
    }
}

void Cradarpro::CalibrationZhZdrKdp(double*, double*, double*, int) {}
