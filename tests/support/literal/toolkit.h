/*
 * toolkit.h - the plain, slow definitions of the toolkit's filters, smoothers and sort,
 * for comparison bit by bit.
 */
#ifndef TESTS_SUPPORT_LITERAL_TOOLKIT_H
#define TESTS_SUPPORT_LITERAL_TOOLKIT_H

#include <vector>

namespace literal {

/* The masked mean of a polar field; rays wrap as often as needed. */
void smoothPolar(const float* in, float* out, const float* mask, int ngates, int nrays, int wgates,
                 int wrays, bool decibels);

/* Ascending by exchange; index as described by out[i] = in[index[i]]. */
void exchangeSort(const float* in, float* out, int* index, int n);

std::vector<double> correlate(const std::vector<double>& x, const std::vector<double>& h);

/* All n + m - 1 values, each summed in kernel order. */
std::vector<float> fullConvolution(const std::vector<float>& x, const std::vector<float>& h);

/* Terms past the image's end are dropped. */
std::vector<float> correlateImage(const std::vector<float>& in, int nx, int ny,
                                  const std::vector<float>& k, int kx, int ky);

std::vector<float> boxMean(const std::vector<float>& x, int nrows, int ncols, int size);

}  // namespace literal

#endif
