/*
 * nearest.h - the nearest of a fixed set of values, for many targets.
 *
 * The same element as a search through all of them that starts at element 0 and replaces only on a
 * strictly smaller |x - target|, in double precision: the first of equals wins, a NaN never does
 * unless it is element 0, which then nothing is smaller than.
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
        int index; /* the first that has this value */
    };

    void divide();
    std::size_t bucketOf(double value) const;
    /* The first entry that is not below a value, or the end. */
    std::size_t lowerBound(double value) const;
    int firstOfEquals(std::size_t best, double target) const;

    /* Finite values, ascending, each once; none when element 0 is a NaN. */
    std::vector<Entry> sorted_;
    /* Their span in as many equal buckets as there are values, one or two in each where they are
     * spread evenly: where each bucket begins in sorted_, and the end. */
    std::vector<std::size_t> start_;
    double lowest_ = 0.0;
    double bucketsPerUnit_ = 0.0;
};

}  // namespace clutter::dsp

#endif
