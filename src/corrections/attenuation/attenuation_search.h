/*
 * attenuation_search.h - finds the coefficient set that rebuilds the measured phase best.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_SEARCH_H
#define CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_SEARCH_H

#include "corrections/attenuation/trials.h"

namespace clutter::corrections {

/* The results of one coefficient set, at every gate of the ray. */
struct Evaluation {
    double* alpha;
    double* a;
    double* b;
    double* ah;
    double* rebuilt;  // phase, degrees
};

/* The exact evaluation of one coefficient set. constraintSum as in computeAttenuation(). */
void evaluateTrial(const Search& search, const Coefficients& trial, const Evaluation& out,
                   double& constraintSum);

/*
 * The trial of the smallest cost: the mean of |rebuilt - measured phase| over precipitation gates,
 * as by evaluateTrial(). The first among equals. NaN as a cost wins for trial 0 only. At least one
 * trial is required.
 */
int findBestTrial(const Search& search, const Trials& trials);

}  // namespace clutter::corrections

#endif
