/*
 * number.h - conversions that are defined for every value.
 */
#ifndef CLUTTER_BASE_NUMBER_H
#define CLUTTER_BASE_NUMBER_H

#include <cmath>
#include <cstdint>
#include <limits>

namespace clutter::base {

/* Truncation toward zero. NaN and values that do not fit give the smallest int. */
inline int truncateToInt(double value) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

/* Truncation toward zero, wrapped to an integer of at most 32 bits. NaN and infinities give 0. */
template <class Integer>
Integer truncateAndWrap(double value) {
    static_assert(sizeof(Integer) <= 4);
    if (!std::isfinite(value)) {
        return 0;
    }
    const double wrapped = std::fmod(std::trunc(value), 4294967296.0);
    return static_cast<Integer>(static_cast<std::int64_t>(wrapped));
}

/* The remainder of a division that rounds down: rays wrap around the circle. */
template <class Integer>
constexpr Integer floorModulo(Integer value, Integer divisor) {
    const Integer remainder = value % divisor;
    return remainder < 0 ? remainder + divisor : remainder;
}

/* The nearest float; an infinity for values that round past the largest one. */
inline float roundToFloat(double value) {
    constexpr float kLargest = std::numeric_limits<float>::max();
    constexpr double kMidway = 0x1.ffffffp127;  // from there on, infinity is the nearest
    const double size = std::fabs(value);
    if (!(size > static_cast<double>(kLargest))) {
        return static_cast<float>(value);
    }
    const float rounded = size < kMidway ? kLargest : std::numeric_limits<float>::infinity();
    return std::signbit(value) ? -rounded : rounded;
}

}  // namespace clutter::base

#endif
