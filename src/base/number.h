/*
 * number.h - conversions that are defined for every value.
 */
#ifndef CLUTTER_BASE_NUMBER_H
#define CLUTTER_BASE_NUMBER_H

#include <limits>

namespace clutter::base {

/* Truncation toward zero; what is no number or does not fit gives the smallest int. */
inline int truncateToInt(double value) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

}  // namespace clutter::base

#endif
