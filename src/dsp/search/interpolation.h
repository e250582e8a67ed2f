/*
 * interpolation.h - piecewise linear interpolation between knots.
 */
#ifndef CLUTTER_DSP_SEARCH_INTERPOLATION_H
#define CLUTTER_DSP_SEARCH_INTERPOLATION_H

namespace clutter::dsp {

/*
 * yi[i] = the value at xi[i] of the line through n >= 1 knots, between the first knot beyond it and
 * the one before. Below the first knot it is y[0]; from the last but one knot on it is y[n - 1],
 * and so for NaN. Knots that do not ascend are searched one by one. yi may be xi.
 */
void interpolateLinear(const double* x, const double* y, int n, const double* xi, double* yi,
                       int ni);

}  // namespace clutter::dsp

#endif
