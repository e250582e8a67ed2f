/*
 * polar_smoothing.h - the masked mean of a polar field over a window of gates by rays.
 *
 * Sums run in window order (rays outer, gates inner), single precision for plain values, double for
 * powers; every lane is one gate, so they are those of a plain loop, bit for bit. A masked member
 * adds a selected 0.0, which leaves any sum that started at +0.0 or above as it was.
 */
#ifndef CLUTTER_DSP_WINDOWS_POLAR_SMOOTHING_H
#define CLUTTER_DSP_WINDOWS_POLAR_SMOOTHING_H

#include "dsp/windows/smoothing_rows.h"

namespace clutter::dsp {

/* Writes one value a gate; out may be the input's values or its mask. Half widths are not negative.
 */
void smoothLinear(const SmoothingInput& input, float* out);

/* The same for values in decibels: the mean of their powers. */
void smoothDecibels(const SmoothingInput& input, float* out);

}  // namespace clutter::dsp

#endif
