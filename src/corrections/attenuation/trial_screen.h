/*
 * trial_screen.h - sorts out the trials that cannot win, with proven bounds.
 *
 * The exact cost of a trial takes a power for every gate. Screening takes one polynomial and one
 * division instead, a few trials side by side, and knows how far its cost can be off; whatever
 * lies within reach of the best is left for the exact evaluation to settle.
 */
#ifndef CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_SCREEN_H
#define CLUTTER_CORRECTIONS_ATTENUATION_TRIAL_SCREEN_H

#include <vector>

#include "corrections/attenuation/attenuation_search.h"

namespace clutter::corrections {

/* Whether no trial (of a fractional exponent b) can have a cost that is a finite number: no gate
 * takes part, or one whose phase is not finite or whose reflectivity has no power. */
bool everyCostIsUndefined(const Search& search);

/* Whether all values lie where the bounds hold. */
bool canScreen(const Search& search, const Trials& trials);

/* The trials, ascending, that may win; requires canScreen(). The winner is among them, and trial 0
 * unless its exact cost is known to be a number. */
std::vector<int> screenTrials(const Search& search, const Trials& trials);

}  // namespace clutter::corrections

#endif
