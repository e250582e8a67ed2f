/*
 * The toolkit's filters and smoothers.
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/array.h"
#include "clutterclassifier/CDSP.h"
#include "dsp/windows/filters.h"
#include "dsp/windows/polar_smoothing.h"

using clutter::base::cellCount;
using clutter::dsp::HalfWindow;
using clutter::dsp::MatrixShape;
using clutter::dsp::PolarShape;

namespace {

template <class To, class From>
std::vector<To> converted(const From* values, int n) {
    std::vector<To> result(static_cast<std::size_t>(std::max(n, 0)));
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<To>(values[i]);
    }
    return result;
}

}  // namespace

int CDSP::conv(float* x, float* h, int n, int m) {
    if (x == nullptr || h == nullptr || n < 1) {
        return n;
    }
    std::vector<double> profile = converted<double>(x, n);
    std::vector<double> kernel = converted<double>(h, m);
    conv(profile.data(), kernel.data(), profile.data(), n, m);
    for (std::size_t i = 0; i < profile.size(); ++i) {
        x[i] = static_cast<float>(profile[i]);
    }
    return n;
}

void CDSP::conv(double* x, double* h, double* y, int n, int m) {
    if (x == nullptr || y == nullptr || n < 1 || (h == nullptr && m > 0)) {
        return;
    }
    const std::vector<double> result = clutter::dsp::correlateCentred(x, n, h, m);
    std::copy(result.begin(), result.end(), y);
}

void CDSP::Filter(float* x, float* h, int n, int m) {
    if (x == nullptr || h == nullptr || n < 1) {
        return;
    }
    const std::vector<float> result = clutter::dsp::convolveCentred(x, n, h, m);
    std::copy(result.begin(), result.end(), x);
}

int CDSP::filtering(float* y, float* x, float* a, float* b, int n, int na, int nb, float yinit,
                    float xinit) {
    if (y == nullptr || x == nullptr) {
        return n;
    }
    for (int i = 0; i < n; ++i) {
        y[i] = 0.0f;
        for (int k = 0; k + 1 < na; ++k) {
            y[i] += -a[k + 1] * (i < k ? yinit : y[i - k]);
        }
        for (int k = 0; k < nb; ++k) {
            y[i] += b[k] * (i + 1 < k ? xinit : x[i - k + 1]);
        }
    }
    return n;
}

void CDSP::Derive(float* x, int n, float step) {
    if (x == nullptr || n < 3) {
        return;
    }
    if (n < 5) {
        std::fill_n(x, n, 0.0f);
        return;
    }
    const std::vector<float> derivative = clutter::dsp::deriveFivePoints(x, n, step);
    std::copy(derivative.begin(), derivative.end(), x);
}

void CDSP::HammingCoef(float* h, float fc, int order) {
    if (h == nullptr || order < 0) {
        return;
    }
    std::vector<double> coefficients(static_cast<std::size_t>(order) + 1);
    HammingCoef(coefficients.data(), static_cast<double>(fc), order);
    for (std::size_t k = 0; k < coefficients.size(); ++k) {
        h[k] = static_cast<float>(coefficients[k]);
    }
}

void CDSP::HammingCoef(double* h, double fc, int order) {
    if (h != nullptr && order >= 0) {
        clutter::dsp::designLowPass(h, fc, order);
    }
}

void CDSP::conv2(float* in, int nx, int ny, float* k, int kx, int ky, float* out) {
    if (in == nullptr || k == nullptr || out == nullptr || nx < 1 || ny < 1) {
        return;
    }
    const std::vector<float> result =
        clutter::dsp::correlateImage(in, MatrixShape{ny, nx}, k, MatrixShape{ky, kx});
    std::copy(result.begin(), result.end(), out);
}

void CDSP::SmoothDataMtx(float* x, int nrows, int ncols, int N) {
    if (x == nullptr || nrows < 1 || ncols < 1 || N < 1) {
        return;
    }
    const auto divisor = static_cast<float>(static_cast<std::int64_t>(N) * N);
    const std::vector<float> result =
        clutter::dsp::boxMean(x, MatrixShape{nrows, ncols}, N / 2, divisor);
    std::copy(result.begin(), result.end(), x);
}

void CDSP::Conv2DPPI(float* in, float* out, float* mask, int ngates, int nrays, int wgates,
                     int wrays, int logmode) {
    if (in == nullptr || out == nullptr || mask == nullptr || ngates < 1 || nrays < 1) {
        return;
    }
    if (static_cast<std::int64_t>(wgates) * wrays <= 1) {
        return;
    }
    const HalfWindow half{wgates / 2, wrays / 2};
    if (half.gates < 0 || half.rays < 0) {  // an empty window
        std::copy_n(in, cellCount(ngates, nrays), out);
    } else if (logmode != 0) {
        clutter::dsp::smoothDecibels({in, mask, PolarShape{ngates, nrays}, half}, out);
    } else {
        clutter::dsp::smoothLinear({in, mask, PolarShape{ngates, nrays}, half}, out);
    }
}
