/*
 * interpolation.h - piecewise linear interpolation between knots.
 */
#ifndef CLUTTER_DSP_SEARCH_INTERPOLATION_H
#define CLUTTER_DSP_SEARCH_INTERPOLATION_H

namespace clutter::dsp {

/*
 * yi[i] = the value at xi[i] of the line through the first of n >= 1 knots above it and the knot
 * before. Below the first knot it is y[0]; from the last knot but one on, and for NaN, it is
 * y[n - 1]. Knots that do not ascend are searched one by one. yi may be xi.
 */
void interpolateLinear(const double* x, const double* y, int n, const double* xi, double* yi,
                       int ni);

}  // namespace clutter::dsp

#endif
