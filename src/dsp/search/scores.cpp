/*
 * Sums of pairs and counts of events, in index order.
 */
#include "dsp/search/scores.h"

#include <cmath>

namespace clutter::dsp {
namespace {

constexpr double kMinPositive = 1e-5;

double logarithm(double value) {
    return std::log10(value > 0.0 ? value : kMinPositive);
}

}  // namespace

void PairSums::add(double a, double b) {
    ++count;
    x += a;
    y += b;
    xx += a * a;
    yy += b * b;
    xy += a * b;
}

double PairSums::correlation() const {
    if (count == 0) {
        return 0.0;
    }
    return (count * xy - x * y) / std::sqrt(count * xx - x * x) / std::sqrt(count * yy - y * y);
}

PairSums sumPairs(const float* x, const float* y, int n, double threshold, bool logarithms) {
    PairSums sums;
    for (int i = 0; i < n; ++i) {
        const double a = x[i];
        const double b = y[i];
        if (!(a >= threshold)) {
            continue;
        }
        if (logarithms) {
            sums.add(logarithm(a), logarithm(b));
        } else {
            sums.add(a, b);
        }
    }
    return sums;
}

Contingency countEvents(const float* first, const float* second, int n, float threshold) {
    Contingency counts;
    for (int i = 0; i < n; ++i) {
        const bool inFirst = first[i] >= threshold;
        const bool inSecond = second[i] >= threshold;
        counts.both += inFirst && inSecond ? 1 : 0;
        counts.firstOnly += inFirst && !inSecond ? 1 : 0;
        counts.secondOnly += inSecond && !inFirst ? 1 : 0;
    }
    return counts;
}

}  // namespace clutter::dsp
