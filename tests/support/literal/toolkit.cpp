/* Filters, smoothers and the sort by their definitions. */
#include "support/literal/toolkit.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace literal {
namespace {

std::size_t at(int row, int column, int columns) {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
           static_cast<std::size_t>(column);
}

}  // namespace

void smoothPolar(const float* in, float* out, const float* mask, int ngates, int nrays, int wgates,
                 int wrays, bool decibels) {
    std::vector<float> scratch(in, in + static_cast<std::ptrdiff_t>(ngates) * nrays);
    for (int r = 0; r < nrays; ++r) {
        for (int g = 0; g < ngates; ++g) {
            double powers = 1e-99;
            float sum = 0.0f;
            int count = 0;
            for (int dr = -(wrays / 2); dr <= wrays / 2; ++dr) {
                for (int dg = -(wgates / 2); dg <= wgates / 2; ++dg) {
                    int ray = r + dr;
                    while (ray < 0) {
                        ray += nrays;
                    }
                    while (ray >= nrays) {
                        ray -= nrays;
                    }
                    const int gate = g + dg < 0 ? 0 : g + dg >= ngates ? ngates - 1 : g + dg;
                    if (!(mask[at(ray, gate, ngates)] == 0.0f)) {
                        continue;
                    }
                    const float value = in[at(ray, gate, ngates)];
                    if (decibels) {
                        powers += std::pow(10.0, 0.1 * value);
                    } else {
                        sum += value;
                    }
                    ++count;
                }
            }
            if (count == 0) {
                continue;
            }
            scratch[at(r, g, ngates)] =
                decibels ? static_cast<float>(10.0 * std::log10(powers / count)) : sum / count;
        }
    }
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        out[i] = scratch[i];
    }
}

void exchangeSort(const float* in, float* out, int* index, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = in[i];
        index[i] = i;
    }
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            if (!(out[j] < out[i])) {
                continue;
            }
            std::swap(out[i], out[j]);
            std::swap(index[i], index[j]);
        }
    }
}

std::vector<double> correlate(const std::vector<double>& x, const std::vector<double>& h) {
    const int n = static_cast<int>(x.size());
    const int m = static_cast<int>(h.size());
    const int half = (m - 1) / 2;
    std::vector<double> y(x.size(), 0.0);
    for (int i = half; i < n - half; ++i) {
        for (int k = -half; k < m - half; ++k) {
            if (i + k >= n) {
                continue;
            }
            y[static_cast<std::size_t>(i)] +=
                x[static_cast<std::size_t>(i + k)] * h[static_cast<std::size_t>(half + k)];
        }
    }
    return y;
}

std::vector<float> fullConvolution(const std::vector<float>& x, const std::vector<float>& h) {
    std::vector<float> full;
    for (std::size_t i = 0; i + 1 < x.size() + h.size(); ++i) {
        float sum = 0.0f;
        for (std::size_t j = 0; j < h.size(); ++j) {
            if (j <= i && i - j < x.size()) {
                sum += h[j] * x[i - j];
            }
        }
        full.push_back(sum);
    }
    return full;
}

std::vector<float> correlateImage(const std::vector<float>& in, int nx, int ny,
                                  const std::vector<float>& k, int kx, int ky) {
    std::vector<float> out = in;
    const int hx = (kx - 1) / 2;
    const int hy = (ky - 1) / 2;
    for (int row = hy; row < ny - hy; ++row) {
        for (int col = hx; col < nx - hx; ++col) {
            float sum = 0.0f;
            for (int q = 0; q < ky; ++q) {
                for (int p = 0; p < kx; ++p) {
                    const std::size_t from = at(row - hy + q, col - hx + p, nx);
                    if (from < in.size()) {
                        sum += in[from] * k[at(q, p, kx)];
                    }
                }
            }
            out[at(row, col, nx)] = sum;
        }
    }
    return out;
}

std::vector<float> boxMean(const std::vector<float>& x, int nrows, int ncols, int size) {
    std::vector<float> out = x;
    const int h = size / 2;
    for (int row = h; row < nrows - h; ++row) {
        for (int col = h; col < ncols - h; ++col) {
            float sum = 0.0f;
            for (int dr = -h; dr <= h; ++dr) {
                for (int dc = -h; dc <= h; ++dc) {
                    sum += x[at(row + dr, col + dc, ncols)];
                }
            }
            out[at(row, col, ncols)] = sum / static_cast<float>(size * size);
        }
    }
    return out;
}

}  // namespace literal
