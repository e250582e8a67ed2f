/*
 * The toolkit's searches, scores, shifts, interpolation, sorting and noise.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "dsp/search/interpolation.h"
#include "dsp/search/matrix_shift.h"
#include "dsp/search/random_fill.h"
#include "dsp/search/scores.h"
#include "dsp/search/search.h"
#include "dsp/search/sorting.h"

using clutter::dsp::Contingency;
using clutter::dsp::MatrixShape;
using clutter::dsp::PairSums;
using clutter::dsp::Shift;
using clutter::dsp::ShiftSearch;

namespace {

constexpr int kMaxShiftWindow = 46340;  // its square is still an int

template <class T, class Better>
void findExtreme(const T* x, int n, int from, int to, Better better, T& extreme, int& index) {
    if (x == nullptr || from < 0 || to <= from || to > n) {
        return;
    }
    index = clutter::dsp::findBest(x, from, to, better);
    extreme = x[index];
}

template <class T, class Distance>
void findNearestElement(const T* x, int n, Distance distance, T& value, int& index) {
    if (x == nullptr || n < 1) {
        return;
    }
    index = clutter::dsp::findNearest(x, n, distance);
    value = x[index];
}

template <class T>
void fillNormal(T* out, int n, T mean, T deviation) {
    clutter::dsp::reseed();
    for (int i = 0; out != nullptr && i < n; ++i) {
        out[i] = static_cast<T>(clutter::dsp::drawNormal(mean, deviation));
    }
}

}  // namespace

void CDSP::GetMax(double* x, int n, int from, int to, double& max, int& index) {
    findExtreme(x, n, from, to, std::greater<>(), max, index);
}

void CDSP::GetMin(double* x, int n, int from, int to, double& min, int& index) {
    findExtreme(x, n, from, to, std::less<>(), min, index);
}

void CDSP::GetMin(float* x, int n, int from, int to, float& min, int& index) {
    findExtreme(x, n, from, to, std::less<>(), min, index);
}

void CDSP::GetMax(float* x, int n, int from, int to, float& max, int& index) {
    if (x == nullptr || from < 0 || from >= n || to < from) {
        return;
    }
    index = clutter::dsp::findBest(x, from, to > n ? from : to, std::greater<>());
    max = x[index];
}

void CDSP::findmaxmin(float* m, int nrows, int ncols, int& rowMax, int& colMax, int& rowMin,
                      int& colMin) {
    rowMax = colMax = rowMin = colMin = 0;
    if (m == nullptr || nrows < 1 || ncols < 1) {
        return;
    }
    float max = m[0];
    float min = m[0];
    for (int col = 0; col < ncols; ++col) {
        for (int row = 0; row < nrows; ++row) {
            const float value = m[static_cast<std::ptrdiff_t>(row) * ncols + col];
            if (value < min) {
                min = value;
                rowMin = row;
                colMin = col;
            } else if (value > max) {
                max = value;
                rowMax = row;
                colMax = col;
            }
        }
    }
}

void CDSP::GetNearest(double* x, int n, double target, double& value, int& index) {
    const auto distance = [target](double element) { return std::fabs(element - target); };
    findNearestElement(x, n, distance, value, index);
}

void CDSP::GetNearest(float* x, int n, float target, float& value, int& index) {
    const auto distance = [wanted = static_cast<double>(target)](float element) {
        return std::fabs(static_cast<double>(element) - wanted);
    };
    findNearestElement(x, n, distance, value, index);
}

void CDSP::GetNearest(unsigned int* x, int n, unsigned int target, unsigned int& value,
                      int& index) {
    const auto distance = [target](unsigned int element) { return element - target; };
    findNearestElement(x, n, distance, value, index);
}

double CDSP::mult(double* a, double* b, int n) {
    return a != nullptr && b != nullptr ? clutter::dsp::sumOfProducts(a, b, n) : 0.0;
}

float CDSP::xcorr(float* a, float* b, int n) {
    return a != nullptr && b != nullptr ? clutter::dsp::sumOfProducts(a, b, n) : 0.0f;
}

float CDSP::corr(float* a, float* b, int n) {
    if (a == nullptr || b == nullptr) {
        n = 0;  // NaN, as for arrays without values
    }
    float meanA = 0.0f, meanB = 0.0f, deviationA = 0.0f, deviationB = 0.0f;
    GetMeanStd(a, n, meanA, deviationA);
    GetMeanStd(b, n, meanB, deviationB);
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) {
        sum += (a[i] - meanA) * (b[i] - meanB);
    }
    return sum / static_cast<float>(n) / (deviationA * deviationB);
}

double CDSP::correlation(float* x, float* y, int& n, double& sx, double& sy, double& sxx,
                         double& syy, double& sxy, double threshold, int linear) {
    const bool given = x != nullptr && y != nullptr && n > 0;
    PairSums sums;
    if (given) {
        sums = clutter::dsp::sumPairs(x, y, n, threshold, linear == 0);
    }
    n = sums.count;
    sx = sums.x;
    sy = sums.y;
    sxx = sums.xx;
    syy = sums.yy;
    sxy = sums.xy;
    return given ? sums.correlation() : -999.0;
}

void CDSP::farpod(float* first, float* second, int& n, float threshold, int& both, int& secondOnly,
                  int& firstOnly, int& neither, double& scoreA, double& scoreB) {
    if (first == nullptr || second == nullptr || n < 0) {
        n = 0;
    }
    const Contingency counts = clutter::dsp::countEvents(first, second, n, threshold);
    both = counts.both;
    secondOnly = counts.secondOnly;
    firstOnly = counts.firstOnly;
    neither = n - both - secondOnly - firstOnly;
    const int once = firstOnly + secondOnly;
    const int inFirst = both + firstOnly;
    scoreA = once > 0 ? static_cast<double>(secondOnly) / once : -1.0;
    scoreB = inFirst > 0 ? static_cast<double>(both) / inFirst : -1.0;
}

void CDSP::ShiftMtx(float* in, float* out, int ncols, int nrows, int rowShift, int colShift) {
    if (in == nullptr || out == nullptr || ncols < 1 || nrows < 1) {
        return;
    }
    (void)clutter::dsp::shiftMatrix(in, out, MatrixShape{nrows, ncols}, Shift{rowShift, colShift});
}

void CDSP::MatrixPrediction(float* current, float* previous, float* predicted, int ncols, int nrows,
                            int window, int& rowShift, int& colShift, int step) {
    if (current == nullptr || previous == nullptr || predicted == nullptr) {
        return;
    }
    if (ncols < 1 || nrows < 1 || step < 1 || window < 1 || window > kMaxShiftWindow) {
        return;
    }
    const ShiftSearch search{window, step};
    std::vector<float> scores = search.score(current, previous, MatrixShape{nrows, ncols});
    const int cells = window * window;
    float best = 0.0f;
    int cell = 0;
    GetMax(scores.data(), cells, 0, cells - 1, best, cell);
    rowShift = search.half() - cell / window;
    colShift = search.half() - cell % window;
    ShiftMtx(previous, predicted, ncols, nrows, rowShift, colShift);
}

void CDSP::interp(double* x, double* y, int n, double* xi, double* yi, int ni) {
    if (x == nullptr || y == nullptr || xi == nullptr || yi == nullptr || n < 1) {
        return;
    }
    clutter::dsp::interpolateLinear(x, y, n, xi, yi, ni);
}

void CDSP::Sort(float* in, float* out, int* index, int n) {
    if (in == nullptr || out == nullptr || index == nullptr) {
        return;
    }
    clutter::dsp::sortByExchange(in, out, index, n);
}

void CDSP::GenerateRandomNoise(double* out, int n, double min, double max) {
    clutter::dsp::fillUniform(out, n, min, max);
}

void CDSP::GenerateRandomNoise(float* out, int n, float min, float max) {
    clutter::dsp::fillUniform(out, n, min, max);
}

void CDSP::GenerateNormallyDistributed(double* out, int n, double mean, double sd) {
    fillNormal(out, n, mean, sd);
}

void CDSP::GenerateNormallyDistributed(float* out, int n, float mean, float sd) {
    fillNormal(out, n, mean, sd);
}

void CDSP::AddNoiseNormallyDistributed(float* x, int n, float mean, float sd) {
    clutter::dsp::reseed();
    for (int i = 0; x != nullptr && i < n; ++i) {
        x[i] = static_cast<float>(static_cast<double>(x[i]) + clutter::dsp::drawNormal(mean, sd));
    }
}
