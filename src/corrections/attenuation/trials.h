/*
 * trials.h - the coefficient sets that are tried on a ray, and what they have in common.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_TRIALS_H
#define CLUTTER_CORRECTIONS_ATTENUATION_TRIALS_H

#include <cstddef>
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

}  // namespace clutter::corrections

#endif
