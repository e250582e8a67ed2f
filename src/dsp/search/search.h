/*
 * search.h - extremes and nearest values of plain arrays.
 */
#ifndef CLUTTER_DSP_SEARCH_SEARCH_H
#define CLUTTER_DSP_SEARCH_SEARCH_H

namespace clutter::dsp {

/* The first of the best elements among from .. to - 1. */
template <class T, class Better>
int findBest(const T* x, int from, int to, Better better) {
    int best = from;
    for (int i = from + 1; i < to; ++i) {
        if (better(x[i], x[best])) {
            best = i;
        }
    }
    return best;
}

/* The first element whose distance is smallest; n is at least 1. */
template <class T, class Distance>
int findNearest(const T* x, int n, Distance distance) {
    int nearest = 0;
    auto least = distance(x[0]);
    for (int i = 1; i < n; ++i) {
        const auto candidate = distance(x[i]);
        if (!(candidate < least)) {
            continue;
        }
        least = candidate;
        nearest = i;
    }
    return nearest;
}

}  // namespace clutter::dsp

#endif
