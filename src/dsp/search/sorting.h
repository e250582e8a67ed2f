/*
 * sorting.h - the order that a selection by exchange leaves, found in n log n steps.
 *
 * The selection: for each position i from the first, every later element that is strictly smaller
 * than the one at i changes places with it. What it does, and why the fast way gives the same:
 *
 * - NaN is never smaller and nothing is smaller than it, so it stays where it is, and the others
 *   are sorted as if it were not there.
 * - Distinct values have one ascending order. It remains to find the order of equal ones (v).
 * - One pass carries the least value met so far: each record lands where the next smaller one was.
 *   Among the values v and the smaller ones this means: the smaller ones lose their first place,
 * and if any v stands before that place, the first such v moves into it. So the smaller places,
 * taken in ascending order, each turn the queue of those v that stand before it by one (the first
 * goes to the end), whatever the smaller values are. Once they are gone, the queue comes out in
 * order.
 */
#ifndef CLUTTER_DSP_SEARCH_SORTING_H
#define CLUTTER_DSP_SEARCH_SORTING_H

namespace clutter::dsp {

/* out[i] = in[index[i]], ascending; out and index hold n values, out may be in. */
void sortByExchange(const float* in, float* out, int* index, int n);

}  // namespace clutter::dsp

#endif
