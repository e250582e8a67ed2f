/*
 * sorting.h - the order that a selection sort by exchange produces, found in n log n steps.
 *
 * The selection sort: for each index i in turn, every later element that is strictly smaller than
 * element i is exchanged with it. Why the fast way gives the same order:
 *
 * - NaN is never smaller and nothing is smaller than NaN. It stays in place, and the other elements
 *   are sorted as if it were absent.
 * - Distinct values have only one ascending order. Only the order among equal values v is in
 *   question.
 * - A pass moves the smallest value found so far: each new minimum leaves its index to the previous
 *   one. Among the values v and the smaller ones, the smaller values lose their first index, and if
 *   any v is before that index, the first such v moves there. So each index of a smaller value, in
 *   ascending order, turns the queue of the v before it by one (the first goes to the end),
 *   whatever the smaller values are. Once these are sorted, the queue leaves in order.
 */
#ifndef CLUTTER_DSP_SEARCH_SORTING_H
#define CLUTTER_DSP_SEARCH_SORTING_H

namespace clutter::dsp {

/* out[i] = in[index[i]], ascending; out and index hold n values, out may be in. */
void sortByExchange(const float* in, float* out, int* index, int n);

}  // namespace clutter::dsp

#endif
