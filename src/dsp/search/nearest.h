/*
 * nearest.h - finds the nearest of a fixed set of values, for many targets.
 *
 * The result is that of a search through all values which starts at element 0 and moves on only for
 * a strictly smaller |x - target|, in double precision: the first of equals wins. NaN is found only
 * as element 0, and then always.
 */
#ifndef CLUTTER_DSP_SEARCH_NEAREST_H
#define CLUTTER_DSP_SEARCH_NEAREST_H

#include <cstddef>
#include <vector>

namespace clutter::dsp {

class NearestValue {
  public:
    /* n may be 0: every search then gives 0. Keeps no pointer to x. */
    NearestValue(const float* x, int n);

    int indexOf(float target) const;

  private:
    struct Entry {
        double value;
        int index;  // of the first element with this value
    };

    void divide();
    std::size_t bucketOf(double value) const;
    /* The first entry not below a value, or the end. */
    std::size_t lowerBound(double value) const;
    int firstOfEquals(std::size_t best, double target) const;

    /* Finite values, ascending, each once; empty when element 0 is NaN. */
    std::vector<Entry> sorted_;
    /* The span of the values is divided into as many equal buckets: evenly spread values are one or
     * two to a bucket. Index in sorted_ of the first value of each bucket, and the end. */
    std::vector<std::size_t> start_;
    double lowest_ = 0.0;
    double bucketsPerUnit_ = 0.0;
};

}  // namespace clutter::dsp

#endif
