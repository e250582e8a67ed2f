/*
 * decibels.h - converts reflectivity from dBZ (single precision) to linear values (double) and
 * back.
 */
#ifndef CLUTTER_CORRECTIONS_DECIBELS_H
#define CLUTTER_CORRECTIONS_DECIBELS_H

#include <cmath>

namespace clutter::corrections {

inline double toLinear(float dbz) {
    return std::pow(10.0, 0.1 * static_cast<double>(dbz));
}

inline float toDecibels(double z) {
    return static_cast<float>(10.0 * std::log10(z));
}

/*
 * toDecibels(toLinear(dbz)). The total error is below 1e-15 (|dbz| + 1) dB, far below half the
 * spacing of floats (at least 2^-25 |dbz|), unless dbz is tiny or its power exceeds double
 * precision: all other values do not change.
 */
inline float thereAndBack(float dbz) {
    const float size = std::fabs(dbz);
    return size >= 1e-3f && size <= 1e3f ? dbz : toDecibels(toLinear(dbz));
}

}  // namespace clutter::corrections

#endif
