/*
 * rain_ray.h - a ray through rain cells whose reflectivity is attenuated and whose phase rises as
 * physics has it, with noise: for comparisons and benches.
 */
#ifndef TESTS_SUPPORT_RAIN_RAY_H
#define TESTS_SUPPORT_RAIN_RAY_H

#include <cmath>
#include <random>

#include "support/literal/corrections.h"

namespace clutter::test {

/* gapShare of the gates in the middle take no part; heaviness scales the rain. */
inline literal::AttenuationRay makeRainRay(int n, unsigned seed, double heaviness = 1.0,
                                           double gapShare = 0.05) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform;
    std::normal_distribution<double> normal;
    literal::AttenuationRay ray;
    const double alpha = 0.04 + 0.05 * uniform(random), a = 3e-5, b = 0.72 + 0.1 * uniform(random);
    double attenuation = 0.0, phase = 5.0;
    double dbz = 30.0;
    for (int g = 0; g < n; ++g) {
        dbz += 1.5 * normal(random) + 0.05 * (35.0 + 6.0 * heaviness - dbz);
        const double ah = a * std::pow(std::pow(10.0, 0.1 * dbz), b);
        attenuation += 2.0 * ah * ray.dr;
        phase += 2.0 * ah / alpha * ray.dr;
        const bool edge = g < 25 || g >= n - 25;
        ray.mask.push_back(!edge && uniform(random) < gapShare ? 3.0 : 0.0);
        ray.z.push_back(std::pow(10.0, 0.1 * (dbz - attenuation)));
        ray.phidp.push_back(phase + 1.5 * normal(random));
    }
    ray.phi0 = 5.0;
    ray.dphi = phase - 5.0;
    return ray;
}

}  // namespace clutter::test

#endif
