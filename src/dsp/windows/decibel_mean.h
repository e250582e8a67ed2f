/*
 * decibel_mean.h - means of powers given in decibels: 10 log10(sum of 10^(0.1 v) / count), rounded
 * to single precision.
 *
 * Powers and logarithms are taken from short series (base/power_series.h); where both ends of an
 * interval of half width roundingMargin() round to the same float, that is the mean. The few other
 * gates (one in 100,000 at 30 dB) and values outside +-300 dB are left to the definition itself.
 */
#ifndef CLUTTER_DSP_WINDOWS_DECIBEL_MEAN_H
#define CLUTTER_DSP_WINDOWS_DECIBEL_MEAN_H

#include <cstdint>

namespace clutter::dsp {

/* Sums of powers start here, so that their logarithm exists. */
inline constexpr double kLeastPower = 1e-99;

/*
 * powers[g] = 10^(0.1 values[g]) where lanes[g] is not 0, else 0. Values below -4000 dB have none
 * in double precision: 0. NaN gives NaN; other values outside +-300 dB give infinity, which keeps
 * decibelsOf from settling anything.
 */
void powersOf(const float* values, const float* lanes, double* powers, int n);

/* levels[j] = 10 log10(levels[j] / counts[j]); NaN and what is no sum of powers stay. */
void toDecibels(double* levels, const float* counts, int n);

/*
 * decibels[j] = 10 log10(sums[j] / counts[j]) rounded to float, own[j] where counts[j] is 0.
 * open[j] is 1 where the margin leaves the last bit open, else 0; true when any is. sums is
 * overwritten.
 */
bool decibelsOf(double* sums, const float* counts, const float* own, double margin, float* decibels,
                std::int32_t* open, int n);

/*
 * How far, in dB, the series and the C library may lie apart for sums of so many members, with
 * room: each sum is good to members * 2^-53, the rest of either way to less than 1e-12 dB.
 */
double roundingMargin(std::int64_t members);

}  // namespace clutter::dsp

#endif
