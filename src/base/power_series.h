/*
 * power_series.h - powers of ten and logarithms from short series, for kernels.
 *
 * The C library's pow and log10 are accurate to the last bit of a double, but cost more than the
 * rest of a formula whose result is rounded to single precision. These series are accurate to about
 * 2e-14 (relative) and 1e-13 dB, and they vectorise. The exact result is within a small interval
 * around theirs: where both ends of it round to the same float, that float is the exact result.
 */
#ifndef CLUTTER_BASE_POWER_SERIES_H
#define CLUTTER_BASE_POWER_SERIES_H

#include <cstdint>

#include "base/bit_cast.h"

namespace clutter::base {

inline constexpr double kLn2 = 0.6931471805599453;
inline constexpr double kLn10 = 2.302585092994046;
inline constexpr double kLog2Of10 = 3.321928094887362;
inline constexpr double kLog10Of2 = 0.30102999566398120;
inline constexpr double kTenPerLn10 = 4.342944819032518;

/* Added to a number of less than 51 bits, it leaves the nearest integer in the lowest bits. */
inline constexpr double kRounder = 0x1.8p52;

inline constexpr int kMantissaBits = 52;
inline constexpr std::uint64_t kOneBits = 0x3ff0000000000000u;
inline constexpr std::uint64_t kRootHalfBits = 0x3fe6a09e667f3bcdu;
inline constexpr std::uint64_t kTwoTo52Bits = 0x4330000000000000u;
inline constexpr double kTwoTo52 = 0x1p52;
inline constexpr double kExponentBias = 1023.0;

/* e^x for |x| <= ln 2 / 2, by its series: the first omitted term is below 2e-16. */
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
    const std::uint64_t exponent = bitCast<std::uint64_t>(rounded) << kMantissaBits;
    return bitCast<double>(bitCast<std::uint64_t>(expSeries(x)) + exponent);
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
    const std::uint64_t bits = bitCast<std::uint64_t>(x);
    const std::uint64_t biased = (bits + (kOneBits - kRootHalfBits)) >> kMantissaBits;
    const double m = bitCast<double>(bits - (biased << kMantissaBits) + kOneBits);
    const double e = bitCast<double>(biased | kTwoTo52Bits) - (kTwoTo52 + kExponentBias);
    return e * (10.0 * kLog10Of2) + logSeries(m) * kTenPerLn10;
}

}  // namespace clutter::base

#endif
