/*
 * polar_smoothing.h - the masked mean of a polar field over a window of gates by rays.
 *
 * Sums are in window order (rays outer, gates inner), in single precision for plain values and in
 * double for powers. Every lane is one gate, so that the sums are those of a plain loop, bit for
 * bit. A masked member adds 0.0, which does not change a sum that started at +0.0 or above.
 */
#ifndef CLUTTER_DSP_WINDOWS_POLAR_SMOOTHING_H
#define CLUTTER_DSP_WINDOWS_POLAR_SMOOTHING_H

#include "dsp/windows/smoothing_rows.h"

namespace clutter::dsp {

/* Writes one value for each gate. out may be the input's values or its mask. Half widths must not
 * be negative. */
void smoothLinear(const SmoothingInput& input, float* out);

/* The same for values in decibels: the mean of their powers, in decibels. */
void smoothDecibels(const SmoothingInput& input, float* out);

}  // namespace clutter::dsp

#endif
