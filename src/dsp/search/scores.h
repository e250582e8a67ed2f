/*
 * scores.h - sums of products and contingency counts of two arrays.
 */
#ifndef CLUTTER_DSP_SEARCH_SCORES_H
#define CLUTTER_DSP_SEARCH_SCORES_H

#include <cstdint>

namespace clutter::dsp {

/* Sum of a[i] b[i] in index order. */
template <class T>
T sumOfProducts(const T* a, const T* b, std::int64_t n) {
    T sum = 0;
    for (std::int64_t i = 0; i < n; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

struct PairSums {
    int count = 0;
    double x = 0.0, y = 0.0, xx = 0.0, yy = 0.0, xy = 0.0;

    void add(double a, double b);
    /* The correlation coefficient; 0 without pairs. */
    double correlation() const;
};

/* Sums over the pairs with x >= threshold, or over their logarithms. */
PairSums sumPairs(const float* x, const float* y, int n, double threshold, bool logarithms);

struct Contingency {
    int both = 0;
    int secondOnly = 0;
    int firstOnly = 0;
};

Contingency countEvents(const float* first, const float* second, int n, float threshold);

}  // namespace clutter::dsp

#endif
