/*
 * nearest.h - the nearest of a fixed set of values, for many targets.
 *
 * The same element as a search through all of them that starts at element 0 and replaces only on a
 * strictly smaller |x - target|, in double precision: the first of equals wins, a NaN never does
 * unless it is element 0, which then nothing is smaller than.
 */
#ifndef CLUTTER_DSP_NEAREST_H
#define CLUTTER_DSP_NEAREST_H

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

    /* Finite values, ascending, each once; none when element 0 is a NaN. */
    std::vector<Entry> sorted_;
};

}  // namespace clutter::dsp

#endif
