/*
 * CDSP.h - the signal-processing toolkit: texture statistics of polar fields.
 */
#ifndef CLUTTERCLASSIFIER_CDSP_H
#define CLUTTERCLASSIFIER_CDSP_H

#include "clutterclassifier/export.h"

/*
 * Stateless routines over flat arrays. A polar field holds gate g of ray r at g + ngates * r; rays
 * are circular, gates are not. A mask element takes part only when it is exactly 0.0 (so NaN
 * excludes). Inputs are not modified, outputs belong to the caller and must not overlap the inputs
 * unless a routine says so. Status codes: 1 done, -1 rejected arguments (no message, outputs
 * untouched).
 */
class CLUTTERCLASSIFIER_EXPORT CDSP {
  public:
    CDSP();
    ~CDSP();
    CDSP(const CDSP&) = delete;
    CDSP& operator=(const CDSP&) = delete;

    /*
     * Mean and population standard deviation of n values: two passes, single-precision sums in
     * index order, divided by n (not n - 1). A NaN among the values makes both NaN. Returns 1, or
     * -1 when n < 1 or x is null.
     */
    int GetMeanStd(float* x, int n, float& mean, float& std);

    /*
     * Standard deviation (GetMeanStd) in an N x N window around each gate; no mask, no wrap-around.
     * The first and last N / 2 rays repeat the nearest computed ray, then the first and last N / 2
     * gates the nearest computed gate. A field smaller than the window gives 0.0 everywhere.
     * Returns 1, or -1 unless both sizes are positive, both arrays given and N is odd and at
     * least 3.
     */
    int GetNxNPointStd(float* in, int ngates, int nrays, float* out, short N);

    /*
     * Standard deviation of the unmasked members of a window of wgates gates x wrays rays around
     * each unmasked gate; masked gates get 0.0. Rays wrap around the circle (as often as a wide
     * window needs); the first and last wgates / 2 gates of a ray repeat the nearest computed gate.
     * Rays not longer than wgates - 1 get 0.0. Values are not screened: only the mask decides.
     * Returns 1, or -1 unless both sizes are positive, all arrays given, both window sizes odd and
     * positive, and the window holds more than one gate.
     */
    int GetNxNPointStdWithMask(float* in, float* mask, int ngates, int nrays, float* out,
                               int wgates, int wrays);

    /* Sorts n values ascending by exchange: out[i] = in[index[i]]. */
    void Sort(float* in, float* out, int* index, int n);
};

#endif
