/*
 * decibels.h - reflectivity from dBZ (single precision) to linear values (double) and back.
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
 * toDecibels(toLinear(dbz)). The two functions and the products together are off by less than
 * 1e-15 (|dbz| + 1) dB, far less than half the spacing of floats (at least 2^-25 |dbz|) unless dbz
 * is next to nothing or has no power in double precision: all other values come back as they were.
 */
inline float thereAndBack(float dbz) {
    const float size = std::fabs(dbz);
    return size >= 1e-3f && size <= 1e3f ? dbz : toDecibels(toLinear(dbz));
}

}  // namespace clutter::corrections

#endif
