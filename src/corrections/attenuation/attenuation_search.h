/*
 * attenuation_search.h - finds the coefficient set that rebuilds the measured phase best.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_SEARCH_H
#define CLUTTER_CORRECTIONS_ATTENUATION_ATTENUATION_SEARCH_H

#include <vector>

#include "corrections/attenuation/attenuation.h"

namespace clutter::corrections {

/* The common input of all trials of a ray. */
struct Search {
    Ray ray;
    int method;
    double phi0;           // start of the rebuilt phase, degrees
    const double* select;  // null, or 1.0 at gates whose coefficients vary; others are nominal

    bool isTried(int g) const { return select == nullptr || select[g] == 1.0; }
};

/* Trial i is alpha[i], a[i], b[i]: all positive, b below 1. */
struct Trials {
    std::vector<double> alpha;
    std::vector<double> a;
    std::vector<double> b;

    int count() const { return static_cast<int>(alpha.size()); }
    Coefficients at(int i) const {
        const std::size_t k = static_cast<std::size_t>(i);
        return {alpha[k], a[k], b[k]};
    }
};

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
