/*
 * rough_fields.h - fields and masks with every kind of value that files hold.
 */
#ifndef CLUTTER_TESTS_SUPPORT_ROUGH_FIELDS_H
#define CLUTTER_TESTS_SUPPORT_ROUGH_FIELDS_H

#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

namespace clutter::test {

/* Ordinary values among NaN, infinities, signed zeros, huge and tiny numbers, and fill values. */
inline float roughValue(std::mt19937& random) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const float odd[] = {NAN,    kInfinity, -kInfinity, -0.0f,    0.0f,   1e30f,   -1e30f,  1e-30f,
                         300.0f, -300.0f,   300.1f,     -3000.0f, 3100.f, -4000.f, -9999.f, -32.0f};
    std::normal_distribution<float> normal(20.0f, 15.0f);
    return random() % 12 == 0 ? odd[random() % std::size(odd)] : normal(random);
}

/* 0.0 or -0.0 where a gate is unmasked, else any other value. */
inline float maskValue(bool masked, std::mt19937& random) {
    const float values[] = {3.0f, NAN, 1e-40f, -5.0f};
    return masked ? values[random() % 4] : random() % 2 == 0 ? 0.0f : -0.0f;
}

}  // namespace clutter::test

#endif
