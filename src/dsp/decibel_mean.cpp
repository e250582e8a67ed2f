#include "dsp/decibel_mean.h"

#include <bit>
#include <cstdint>
#include <limits>

#include "base/kernel.h"

namespace clutter::dsp {
namespace {

constexpr double kLn2 = 0.6931471805599453;
constexpr double kLn10 = 2.302585092994046;
constexpr double kLog2Of10 = 3.321928094887362;
constexpr double kLog10Of2 = 0.30102999566398120;
constexpr double kTenPerLn10 = 4.342944819032518;

/* Added to a number of less than 51 bits, it leaves the number's nearest integer in the low bits.
 */
constexpr double kRounder = 0x1.8p52;

constexpr int kMantissaBits = 52;
constexpr std::uint64_t kOneBits = 0x3ff0000000000000u;
constexpr std::uint64_t kRootHalfBits = 0x3fe6a09e667f3bcdu;
constexpr std::uint64_t kTwoTo52Bits = 0x4330000000000000u;
constexpr double kTwoTo52 = 0x1p52;
constexpr double kExponentBias = 1023.0;

constexpr float kMostDecibels = 300.0f;
constexpr float kNoPower = -4000.0f;
constexpr double kMostSum = 1e60;      // of powers within kMostDecibels
constexpr float kMostLevel = 1000.0f;  // of such sums, in dB

/* e^x for |x| <= ln 2 / 2, by its series: the first term left out is below 2e-16. */
inline double expSeries(double x) {
    double sum = 1.0 / 479001600;
    sum = sum * x + 1.0 / 39916800;
    sum = sum * x + 1.0 / 3628800;
    sum = sum * x + 1.0 / 362880;
    sum = sum * x + 1.0 / 40320;
    sum = sum * x + 1.0 / 5040;
    sum = sum * x + 1.0 / 720;
    sum = sum * x + 1.0 / 120;
    sum = sum * x + 1.0 / 24;
    sum = sum * x + 1.0 / 6;
    sum = sum * x + 0.5;
    sum = sum * x + 1.0;
    return sum * x + 1.0;
}

/* 10^y = 2^whole e^x with |x| <= ln 2 / 2, for |y| up to 30. */
inline double powerOfTen(double y) {
    const double rounded = y * kLog2Of10 + kRounder;
    const double whole = rounded - kRounder;
    const double x = y * kLn10 - whole * kLn2;
    const std::uint64_t exponent = std::bit_cast<std::uint64_t>(rounded) << kMantissaBits;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(expSeries(x)) + exponent);
}

/* ln m = 2 (s + s^3/3 + s^5/5 + ...), s = (m - 1) / (m + 1), for m within 1/sqrt(2) .. sqrt(2). */
inline double logSeries(double m) {
    const double s = (m - 1.0) / (m + 1.0);
    const double square = s * s;
    double sum = 1.0 / 19;
    sum = sum * square + 1.0 / 17;
    sum = sum * square + 1.0 / 15;
    sum = sum * square + 1.0 / 13;
    sum = sum * square + 1.0 / 11;
    sum = sum * square + 1.0 / 9;
    sum = sum * square + 1.0 / 7;
    sum = sum * square + 1.0 / 5;
    sum = sum * square + 1.0 / 3;
    return 2.0 * (s + s * square * sum);
}

/* 10 log10(x) of a normal number: x = m 2^e, m within 1/sqrt(2) .. sqrt(2). */
inline double decibels(double x) {
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    const std::uint64_t biased = (bits + (kOneBits - kRootHalfBits)) >> kMantissaBits;
    const double m = std::bit_cast<double>(bits - (biased << kMantissaBits) + kOneBits);
    const double e = std::bit_cast<double>(biased | kTwoTo52Bits) - (kTwoTo52 + kExponentBias);
    return e * (10.0 * kLog10Of2) + logSeries(m) * kTenPerLn10;
}

CLUTTER_KERNEL bool settle(const double* levels, const float* counts, const float* own,
                           double margin, float* __restrict result, std::int32_t* __restrict open,
                           int n) {
    int any = 0;
    for (int j = 0; j < n; ++j) {
        const float low = static_cast<float>(levels[j] - margin);
        const float high = static_cast<float>(levels[j] + margin);
        const bool differ = low != high || low > kMostLevel;
        const bool isNan = low != low;
        result[j] = counts[j] != 0.0f ? low : own[j];
        open[j] = differ && !isNan && counts[j] != 0.0f ? 1 : 0;
        any |= open[j];
    }
    return any != 0;
}

}  // namespace

CLUTTER_KERNEL void powersOf(const float* values, const float* lanes, double* __restrict powers,
                             int n) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (int g = 0; g < n; ++g) {
        const float value = values[g];
        const bool inside = value >= -kMostDecibels && value <= kMostDecibels;
        const double power = powerOfTen(0.1 * static_cast<double>(inside ? value : 0.0f));
        const double outside = value < kNoPower ? 0.0 : value != value ? value : kInfinity;
        const double member = inside ? power : outside;
        powers[g] = lanes[g] != 0.0f ? member : 0.0;
    }
}

CLUTTER_KERNEL void toDecibels(double* __restrict levels, const float* __restrict counts, int n) {
    for (int j = 0; j < n; ++j) {
        const double sum = levels[j];
        const double level = decibels(sum / static_cast<double>(counts[j]));
        levels[j] = sum <= kMostSum ? level : sum;
    }
}

bool decibelsOf(double* sums, const float* counts, const float* own, double margin, float* result,
                std::int32_t* open, int n) {
    toDecibels(sums, counts, n);
    return settle(sums, counts, own, margin, result, open, n);
}

double roundingMargin(std::int64_t members) {
    return 4e-12 + 2e-15 * static_cast<double>(members);
}

}  // namespace clutter::dsp
