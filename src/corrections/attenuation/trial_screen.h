/*
 * trial_screen.h - excludes trials that cannot win, with proven bounds.
 *
 * The exact cost of a trial needs a power for every gate. Screening needs one polynomial and one
 * division instead, for a group of trials at once, with a bound of the error of each cost. Trials
 * that may be the best within this error are left to the exact evaluation.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_SCREEN_H
#define CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_SCREEN_H

#include <vector>

#include "corrections/attenuation/trials.h"

namespace clutter::corrections {

/* Whether no trial (with a fractional exponent b) can have a finite cost: without precipitation
 * gates, or with one whose phase is not finite or whose reflectivity is negative, infinite or NaN.
 */
bool everyCostIsUndefined(const Search& search);

/* Whether all values are in the range where the bounds hold. */
bool canScreen(const Search& search, const Trials& trials);

/* The trials that may win, ascending; requires canScreen(). The winner is among them, and so is
 * trial 0 unless its exact cost is known not to be NaN. */
std::vector<int> screenTrials(const Search& search, const Trials& trials);

}  // namespace clutter::corrections

#endif
