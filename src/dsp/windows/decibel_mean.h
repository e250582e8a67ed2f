/*
 * decibel_mean.h - means of powers given in decibels: 10 log10(sum of 10^(0.1 v) / count), rounded
 * to single precision.
 *
 * Powers and logarithms come from short series (base/power_series.h). Where both ends of an
 * interval of half width roundingMargin() round to the same float, that float is the mean. For the
 * few other gates (one in 100,000 at 30 dB) and for values outside +-300 dB the caller evaluates
 * the definition.
 */
#ifndef CLUTTER_DSP_WINDOWS_DECIBEL_MEAN_H
#define CLUTTER_DSP_WINDOWS_DECIBEL_MEAN_H

#include <cstdint>

namespace clutter::dsp {

/* Sums of powers start here, so that their logarithm exists. */
inline constexpr double kMinPower = 1e-99;

/*
 * powers[g] = 10^(0.1 values[g]) where lanes[g] is not 0, else 0. Values below -4000 dB give 0, NaN
 * gives NaN. Other values outside +-300 dB give infinity, which makes decibelsOf() report the gate
 * as uncertain.
 */
void powersOf(const float* values, const float* lanes, double* powers, int n);

/* levels[j] = 10 log10(levels[j] / counts[j]). NaN and sums past the range of powers stay. */
void toDecibels(double* levels, const float* counts, int n);

/*
 * decibels[j] = 10 log10(sums[j] / counts[j]) rounded to float, own[j] where counts[j] is 0.
 * uncertain[j] is 1 where the margin leaves the last bit uncertain, else 0; true when any is 1.
 * sums is overwritten.
 */
[[nodiscard]] bool decibelsOf(double* sums, const float* counts, const float* own, double margin,
                              float* decibels, std::int32_t* uncertain, int n);

/*
 * A bound of the difference, in dB, between the series and the C library for sums of this many
 * members: the error of each sum is below members * 2^-53, all other errors are below 1e-12 dB.
 */
double roundingMargin(std::int64_t members);

}  // namespace clutter::dsp

#endif
