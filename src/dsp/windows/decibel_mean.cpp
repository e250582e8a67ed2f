/*
 * Powers and their logarithms from short series, with a check of the last bit.
 */
#include "dsp/windows/decibel_mean.h"

#include <cstdint>
#include <limits>

#include "base/kernel.h"
#include "base/power_series.h"

namespace clutter::dsp {
namespace {

using base::decibels;
using base::powerOfTen;

constexpr float kMaxDecibels = 300.0f;
constexpr float kNoPower = -4000.0f;
constexpr double kMaxSum = 1e60;      // of powers within kMaxDecibels
constexpr float kMaxLevel = 1000.0f;  // of such sums, in dB

CLUTTER_KERNEL bool roundLevels(const double* levels, const float* counts, const float* own,
                                double margin, float* __restrict result,
                                std::int32_t* __restrict uncertain, int n) {
    int any = 0;
    for (int j = 0; j < n; ++j) {
        const float low = static_cast<float>(levels[j] - margin);
        const float high = static_cast<float>(levels[j] + margin);
        const bool differ = low != high || low > kMaxLevel;
        const bool isNan = low != low;
        result[j] = counts[j] != 0.0f ? low : own[j];
        uncertain[j] = differ && !isNan && counts[j] != 0.0f ? 1 : 0;
        any |= uncertain[j];
    }
    return any != 0;
}

}  // namespace

CLUTTER_KERNEL void powersOf(const float* values, const float* lanes, double* __restrict powers,
                             int n) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (int g = 0; g < n; ++g) {
        const float value = values[g];
        const bool inside = value >= -kMaxDecibels && value <= kMaxDecibels;
        const double power = powerOfTen(0.1 * static_cast<double>(inside ? value : 0.0f));
        const double same = static_cast<double>(value);
        const double outside = value < kNoPower ? 0.0 : value != value ? same : kInfinity;
        const double member = inside ? power : outside;
        powers[g] = lanes[g] != 0.0f ? member : 0.0;
    }
}

CLUTTER_KERNEL void toDecibels(double* __restrict levels, const float* __restrict counts, int n) {
    for (int j = 0; j < n; ++j) {
        const double sum = levels[j];
        const double level = decibels(sum / static_cast<double>(counts[j]));
        levels[j] = sum <= kMaxSum ? level : sum;
    }
}

bool decibelsOf(double* sums, const float* counts, const float* own, double margin, float* result,
                std::int32_t* uncertain, int n) {
    toDecibels(sums, counts, n);
    return roundLevels(sums, counts, own, margin, result, uncertain, n);
}

double roundingMargin(std::int64_t members) {
    return 4e-12 + 2e-15 * static_cast<double>(members);
}

}  // namespace clutter::dsp
