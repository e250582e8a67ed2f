/*
 * Each kernel term is one pass over the output.
 */
#include "dsp/windows/filters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/constants.h"
#include "base/kernel.h"

namespace clutter::dsp {
namespace {

/* sums[j] += cells[j] * factor */
CLUTTER_KERNEL void addScaled(const double* cells, double factor, std::int64_t n,
                              double* __restrict sums) {
    for (std::int64_t j = 0; j < n; ++j) {
        sums[j] += cells[j] * factor;
    }
}

CLUTTER_KERNEL void addScaled(const float* cells, float factor, std::int64_t n,
                              float* __restrict sums) {
    for (std::int64_t j = 0; j < n; ++j) {
        sums[j] += cells[j] * factor;
    }
}

CLUTTER_KERNEL void add(const float* cells, std::int64_t n, float* __restrict sums) {
    for (std::int64_t j = 0; j < n; ++j) {
        sums[j] += cells[j];
    }
}

CLUTTER_KERNEL void differentiate(const float* x, float divisor, int n, float* __restrict d) {
    for (int i = 2; i < n - 2; ++i) {
        d[i] = (8.0f * x[i + 1] + (x[i - 2] - 8.0f * x[i - 1]) - x[i + 2]) / divisor;
    }
}

std::size_t countOf(std::int64_t n) {
    return static_cast<std::size_t>(std::max<std::int64_t>(n, 0));
}

}  // namespace

std::vector<double> correlateCentred(const double* x, int n, const double* h, int m) {
    std::vector<double> y(countOf(n), 0.0);
    const std::int64_t half = (std::max(m, 0) - 1) / 2;
    for (int k = 0; k < m; ++k) {
        // The last term of an even kernel reaches one element past the profile's end.
        const std::int64_t end = std::min<std::int64_t>(n - half, n + half - k);
        if (end <= half) {
            break;
        }
        addScaled(x + k, h[k], end - half, y.data() + half);
    }
    return y;
}

std::vector<float> convolveCentred(const float* x, int n, const float* h, int m) {
    std::vector<float> y(countOf(n), 0.0f);
    const std::int64_t half = (std::max(m, 0) - 1) / 2;
    for (std::int64_t j = 0; j < m; ++j) {  // y[i] += h[j] x[i + half - j]
        const std::int64_t first = std::max<std::int64_t>(0, j - half);
        const std::int64_t end = std::min<std::int64_t>(n, n + j - half);
        if (first < end) {
            addScaled(x + first + half - j, h[j], end - first, y.data() + first);
        }
    }
    return y;
}

std::vector<float> deriveFivePoints(const float* x, int n, float step) {
    std::vector<float> d(countOf(n), 0.0f);
    differentiate(x, 12.0f * step, n, d.data());
    d[0] = d[1] = d[2];
    return d;
}

void designLowPass(double* h, double cutOff, int order) {
    const int half = order / 2;
    std::fill_n(h, static_cast<std::size_t>(order) + 1, 0.0);
    for (int k = -half; k <= half; ++k) {
        const double window = 0.54 + 0.46 * std::cos(base::kTwoPi * k / order);
        const double angle = base::kTwoPi * cutOff * k;
        const double response = k == 0 ? 2.0 * cutOff : std::sin(angle) * 2.0 * cutOff / angle;
        h[k + half] = response * window;
    }
    double sum = 0.0;
    for (std::int64_t k = 0; k <= order; ++k) {
        sum += h[k];
    }
    for (std::int64_t k = 0; k <= order; ++k) {
        h[k] /= sum;
    }
}

std::vector<float> correlateImage(const float* image, MatrixShape shape, const float* kernel,
                                  MatrixShape kernelShape) {
    std::vector<float> result(image, image + shape.cells());
    const int centreRow = (std::max(kernelShape.rows, 0) - 1) / 2;
    const int centreColumn = (std::max(kernelShape.columns, 0) - 1) / 2;
    const std::int64_t inner = static_cast<std::int64_t>(shape.columns) - 2LL * centreColumn;
    if (inner < 1) {
        return result;
    }
    for (int row = centreRow; row < shape.rows - centreRow; ++row) {
        float* sums = result.data() + shape.offset(row) + centreColumn;
        std::fill_n(sums, inner, 0.0f);
        for (std::int64_t q = 0; q < kernelShape.rows; ++q) {
            for (std::int64_t p = 0; p < kernelShape.columns; ++p) {
                const std::int64_t from = shape.offset(row - centreRow + q) + p;
                const std::int64_t n = std::min(inner, shape.cells() - from);
                if (n < 1) {
                    break;
                }
                addScaled(image + from, kernel[kernelShape.offset(q) + p], n, sums);
            }
        }
    }
    return result;
}

std::vector<float> boxMean(const float* matrix, MatrixShape shape, int half, float divisor) {
    std::vector<float> result(matrix, matrix + shape.cells());
    const std::int64_t inner = static_cast<std::int64_t>(shape.columns) - 2LL * half;
    if (inner < 1) {
        return result;
    }
    for (std::int64_t row = half; row < static_cast<std::int64_t>(shape.rows) - half; ++row) {
        float* means = result.data() + shape.offset(row) + half;
        std::fill_n(means, inner, 0.0f);
        for (std::int64_t r = row - half; r <= row + half; ++r) {
            for (std::int64_t c = 0; c <= 2LL * half; ++c) {
                add(matrix + shape.offset(r) + c, inner, means);
            }
        }
        for (std::int64_t j = 0; j < inner; ++j) {
            means[j] /= divisor;
        }
    }
    return result;
}

}  // namespace clutter::dsp
