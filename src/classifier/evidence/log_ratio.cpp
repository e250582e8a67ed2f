/*
 * ln(a / b) from exponents and mantissas: a = ma 2^ea and b = mb 2^eb with ma / mb within
 * sqrt(1/2) .. sqrt(2), so that
 *
 *     ln(a / b) = (ea - eb) ln 2 + 2 artanh(s),    s = (ma - mb) / (ma + mb)
 *
 * The difference of the mantissas is exact, hence the result is also accurate near 0. The series of
 * artanh ends at s^9: |s| is at most 0.172.
 */
#include "classifier/evidence/log_ratio.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include "base/bit_cast.h"
#include "base/kernel.h"

namespace clutter::classifier {
namespace {

constexpr std::uint64_t kMantissa = 0x000fffffffffffffu;
constexpr std::uint64_t kOne = 0x3ff0000000000000u;
constexpr std::uint32_t kMinNormal = 0x00100000u;  // high words of positive numbers
constexpr std::uint32_t kNormals = 0x7fe00000u;
constexpr double kRootOfTwo = 1.4142135623730951;
constexpr float kLnOfTwo = 0.693147181f;

/* Returns whether all numbers are positive and normal; the others have undefined results. */
CLUTTER_KERNEL bool logRatiosOfNormals(const double* __restrict above,
                                       const double* __restrict below, float* __restrict out,
                                       int n) {
    int strange = 0;
    for (int j = 0; j < n; ++j) {
        const auto a = base::bitCast<std::uint64_t>(above[j]);
        const auto b = base::bitCast<std::uint64_t>(below[j]);
        const auto highA = static_cast<std::uint32_t>(a >> 32);
        const auto highB = static_cast<std::uint32_t>(b >> 32);
        strange |= highA - kMinNormal < kNormals && highB - kMinNormal < kNormals ? 0 : 1;
        const double mantissaA = base::bitCast<double>((a & kMantissa) | kOne);
        const double mantissaB = base::bitCast<double>((b & kMantissa) | kOne);
        const bool large = mantissaA > kRootOfTwo * mantissaB;
        const bool small = kRootOfTwo * mantissaA < mantissaB;
        const double ma = large ? 0.5 * mantissaA : mantissaA;
        const double mb = small ? 0.5 * mantissaB : mantissaB;
        const int exponent = static_cast<int>(highA >> 20) - static_cast<int>(highB >> 20) +
                             (large ? 1 : 0) - (small ? 1 : 0);
        const float s = static_cast<float>(ma - mb) / static_cast<float>(ma + mb);
        const float s2 = s * s;
        const float series =
            2.0f +
            s2 * (2.0f / 3.0f + s2 * (2.0f / 5.0f + s2 * (2.0f / 7.0f + s2 * (2.0f / 9.0f))));
        out[j] = static_cast<float>(exponent) * kLnOfTwo + s * series;
    }
    return strange == 0;
}

constexpr float kMaxExponent = 87.0f;   // of exp, so that it stays a normal number
constexpr float kLogOfE = 1.44269504f;  // base 2
constexpr float kLnOfTwoHigh = 0.693359375f;
constexpr float kLnOfTwoLow = -2.12194440e-4f;

CLUTTER_KERNEL void probabilitiesOf(const float* __restrict margins, float* __restrict out, int n) {
    for (int j = 0; j < n; ++j) {
        float x = -margins[j];
        x = x > kMaxExponent ? kMaxExponent : x;
        x = x < -kMaxExponent ? -kMaxExponent : x;
        const float number = x == x ? x : 0.0f;  // the conversion must be defined, NaN stays in r
        const int power = static_cast<int>(number * kLogOfE + (number < 0.0f ? -0.5f : 0.5f));
        const float whole = static_cast<float>(power);
        const float r = x - whole * kLnOfTwoHigh - whole * kLnOfTwoLow;
        const float series =
            1.0f +
            r * (1.0f + r * (1.0f / 2 + r * (1.0f / 6 + r * (1.0f / 24 + r * (1.0f / 120)))));
        const auto scale = base::bitCast<float>(static_cast<std::uint32_t>(power + 127) << 23);
        out[j] = 1.0f / (1.0f + series * scale);
    }
}

}  // namespace

double logRatio(double above, double below) {
    if (above == below) {
        return 0.0;
    }
    if (!(above == above && below == below)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double size = above > below ? kInfinity : -kInfinity;
    if (!(above > 0.0 && below > 0.0 && above < kInfinity && below < kInfinity)) {
        return size;
    }
    // The quotient keeps the difference of close numbers, but it may overflow or vanish.
    const double quotient = above / below;
    return std::isnormal(quotient) ? std::log(quotient) : std::log(above) - std::log(below);
}

void logRatios(const double* above, const double* below, float* out, int n) {
    if (logRatiosOfNormals(above, below, out, n)) {
        return;
    }
    for (int j = 0; j < n; ++j) {
        const bool normal =
            std::isnormal(above[j]) && std::isnormal(below[j]) && above[j] > 0.0 && below[j] > 0.0;
        if (!normal) {
            out[j] = static_cast<float>(logRatio(above[j], below[j]));
        }
    }
}

void probabilities(const float* margins, float* out, int n) {
    probabilitiesOf(margins, out, n);
}

}  // namespace clutter::classifier
