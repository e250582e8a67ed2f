/*
 * filters.h - one- and two-dimensional filters of profiles and matrices.
 *
 * Each lane is an output element that sums its terms in kernel order, so that all sums are those of
 * a plain loop, bit for bit. Results never alias inputs.
 */
#ifndef CLUTTER_DSP_WINDOWS_FILTERS_H
#define CLUTTER_DSP_WINDOWS_FILTERS_H

#include <cstdint>
#include <vector>

namespace clutter::dsp {

/* Element (row, column) at row * columns + column. */
struct MatrixShape {
    int rows;
    int columns;

    std::int64_t cells() const { return static_cast<std::int64_t>(rows) * columns; }
    std::int64_t offset(std::int64_t row) const { return row * columns; }
};

/* y[i] = sum of x[i + k] h[half + k], half = (m - 1) / 2; 0 within half of either end. */
std::vector<double> correlateCentred(const double* x, int n, const double* h, int m);

/* The middle n values of the convolution of x and h. */
std::vector<float> convolveCentred(const float* x, int n, const float* h, int m);

/* Five-point derivative of n >= 5 samples. */
std::vector<float> deriveFivePoints(const float* x, int n, float step);

/* Hamming-windowed sinc, order + 1 coefficients that add up to 1. */
void designLowPass(double* h, double cutOff, int order);

/* Two-dimensional correlation. The border keeps the image's values. */
std::vector<float> correlateImage(const float* image, MatrixShape shape, const float* kernel,
                                  MatrixShape kernelShape);

/* Window sums of (2 half + 1) x (2 half + 1) divided by divisor. The border keeps its values. */
std::vector<float> boxMean(const float* matrix, MatrixShape shape, int half, float divisor);

}  // namespace clutter::dsp

#endif
