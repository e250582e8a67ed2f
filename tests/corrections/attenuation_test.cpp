/*
 * Specific attenuation, differential attenuation and hot spots of one ray.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "clutterclassifier/Cradarpro.h"
#include "support/bits.h"
#include "support/rain_ray.h"

namespace {

using clutter::test::makeRainRay;
using clutter::test::sameBits;
using literal::AttenuationRay;
using literal::Values;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(AlgorithmTable, RangesTrialsAndMethods) {
    const struct {
        int alg;
        double range[6];  // a, b, alpha
        int count, method;
    } rows[] = {
        {0, {3e-5, 3e-5, 0.78, 0.78, 0.02, 0.1}, 500, 0},
        {1, {1e-5, 9e-5, 0.65, 0.85, 0.02, 0.1}, 500, 1},
        {2, {1e-5, 9e-5, 0.65, 0.85, 0.02, 0.1}, 500, 2},
        {3, {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073}, 1, 3},
        {4, {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073}, 1, 0},
        {5, {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073}, 1, 1},
        {6, {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073}, 1, 2},
        {7, {9, 9, 9, 9, 9, 9}, 9, -1},
        {8, {3e-5, 3e-5, 0.65, 0.85, 0.02, 0.1}, 500, 0},
        {-1, {9, 9, 9, 9, 9, 9}, 9, -1},
        {9, {9, 9, 9, 9, 9, 9}, 9, -1},
    };
    Cradarpro radar;
    for (const auto& row : rows) {
        double alpha = 9, a = 9, b = 9, range[6] = {9, 9, 9, 9, 9, 9};
        int count = 9, method = 9;
        EXPECT_EQ(radar.algs_attcor(row.alg, 500, alpha, a, b, range[0], range[1], range[2],
                                    range[3], range[4], range[5], count, method),
                  row.method);
        EXPECT_EQ(method, row.method);
        EXPECT_EQ(count, row.count) << row.alg;
        EXPECT_EQ(Values({alpha, a, b}), Values({0.073, 3e-5, 0.78}));
        for (int k = 0; k < 6; ++k) {
            EXPECT_EQ(range[k], row.range[k]) << row.alg << ' ' << k;
        }
    }
}

TEST(SpecificAttenuation, SameBitsAsThePlainDefinition) {
    std::mt19937 random(51);
    std::uniform_real_distribution<double> uniform;
    Cradarpro radar;
    for (unsigned round = 0; round < 100; ++round) {
        AttenuationRay ray = makeRainRay(static_cast<int>(random() % 90), round, 1.0, 0.2);
        const std::size_t n = ray.z.size();
        Values alpha, a, b, ah(n, -7.0), expected;
        for (std::size_t g = 0; g < n; ++g) {
            const bool same = g > 0 && random() % 3 != 0;
            alpha.push_back(same ? alpha.back() : 0.02 + 0.2 * uniform(random));
            a.push_back(same ? a.back() : 1e-5 + 8e-5 * uniform(random));
            b.push_back(same ? b.back() : 0.65 + 0.2 * uniform(random));
            if (random() % 15 == 0) {
                ray.mask[g] = kNan;
            }
            if (round % 10 == 0 && random() % 30 == 0) {
                ray.z[g] = random() % 2 == 0 ? kNan : 0.0;
            }
            if (round % 10 == 0 && random() % 30 == 0) {
                ray.phidp[g] = kNan;
            }
        }
        for (const int method : {-1, 0, 1, 2, 3, 4}) {
            radar.ahConstraintSum = -7.0;
            double constraint = -7.0;
            radar.Ah(ray.z.data(), ray.mask.data(), ray.phidp.data(), ray.n(), alpha.data(),
                     a.data(), b.data(), ray.dphi, ray.dr, ah.data(), method);
            literal::attenuation(ray, alpha, a, b, method, expected, constraint);
            ASSERT_TRUE(sameBits(ah, expected)) << "method " << method << ", round " << round;
            EXPECT_TRUE(sameBits(radar.ahConstraintSum, constraint)) << method;
        }
    }
}

/* Constant rain of k dB/km in fine gates: the measured reflectivity decays as the integral has it,
 * and every solution gives back k. */
TEST(SpecificAttenuation, ConstantRainGivesBackItsAttenuation) {
    const double alpha = 0.073, b = 0.78, a = 3e-5, z0 = std::pow(10.0, 4.5);
    const double k = a * std::pow(z0, b);
    const int n = 4000;
    AttenuationRay ray;
    ray.dr = 0.005;
    for (int g = 0; g < n; ++g) {
        const double path = 2.0 * k * (g + 0.5) * ray.dr;
        ray.z.push_back(z0 * std::pow(10.0, -0.1 * path));
        ray.phidp.push_back(path / alpha);
        ray.mask.push_back(0.0);
    }
    ray.dphi = 2.0 * k * n * ray.dr / alpha;
    const Values alphas(ray.z.size(), alpha), as(ray.z.size(), a), bs(ray.z.size(), b);
    Values ah(ray.z.size());
    Cradarpro radar;
    for (const int method : {0, 1, 2, 3}) {
        radar.Ah(ray.z.data(), ray.mask.data(), ray.phidp.data(), n, alphas.data(), as.data(),
                 bs.data(), ray.dphi, ray.dr, ah.data(), method);
        for (int g = 3; g < n - 3; g += 100) {
            EXPECT_NEAR(ah[static_cast<std::size_t>(g)], k, 0.005 * k) << method << ' ' << g;
        }
    }
    // What the rain attenuates and what is left of it make up the whole (0.46 for 2 ln 10 / 10).
    EXPECT_NEAR(radar.ahConstraintSum, 1.0, 0.002);
}

TEST(SpecificAttenuation, PhaseSlopeNeedsSevenGates) {
    const int n = 30;
    Values z(n, 1e4), phidp, mask(n, 0.0), alpha(n, 0.1), ah(n, -7.0);
    for (int g = 0; g < n; ++g) {
        phidp.push_back(g < 20 ? 6.0 * g : 114.0 - 6.0 * (g - 19));
    }
    mask[10] = 3.0;
    Cradarpro().Ah(z.data(), mask.data(), phidp.data(), n, alpha.data(), alpha.data(), alpha.data(),
                   0.0, 0.5, ah.data(), 3);
    for (int g = 0; g < n; ++g) {
        const bool slope = (g >= 3 && g <= 6) || (g >= 14 && g <= 16);
        const double value = ah[static_cast<std::size_t>(g)];
        if (slope) {
            EXPECT_NEAR(value, 0.1 * 6.0 / 0.5 / 2.0, 1e-12) << g;
        } else if (g < 17 || g > 20) {
            EXPECT_EQ(value, 0.0) << g;
        }
        EXPECT_GE(value, 0.0);
    }
}

TEST(DifferentialAttenuation, FarEndMeetsItsTarget) {
    const int n = 100;
    const double dr = 0.25, alpha = 0.08;
    Values z(n, 10.0), ah(n, 0.2), mask(n, 0.0), zdr, out(n, -7.0);
    const double path = 0.2 * n * dr;
    // Drops are round at 10 dBZ: the far end's mean of -0.8 dB is all attenuation.
    for (int g = 0; g < n; ++g) {
        zdr.push_back(-0.8);
    }
    mask[5] = 3.0;
    Cradarpro radar;
    double gamma = -7.0, pida = -7.0;
    ASSERT_EQ(radar.Adp_optimal(z.data(), zdr.data(), ah.data(), n, dr, alpha, 30.0, mask.data(),
                                out.data(), gamma, pida),
              1);
    // 0.125 dB a step: 0.006 is 0.05 dB short, one step back up ends the search.
    EXPECT_NEAR(gamma, 0.007, 1e-12);
    EXPECT_NEAR(pida, 2.0 * gamma / alpha * path, 1e-9);
    EXPECT_NEAR(out[99], -0.8 + pida, 1e-9);
    EXPECT_EQ(out[5], -0.8) << "masked gates keep their value";

    // 40 dBZ at the far end: 0.48 * 4 - 0.774 dB is expected of it.
    std::fill(z.begin() + 50, z.end(), 1e4);
    ASSERT_EQ(radar.Adp_optimal(z.data(), zdr.data(), ah.data(), n, dr, alpha, 20.001, mask.data(),
                                zdr.data(), gamma, pida),
              1);
    EXPECT_NEAR(gamma, 0.015, 1e-12) << "0.016 is the first above 1.946 dB";
    EXPECT_NEAR(pida, 2.0 * 0.015 / alpha * path, 1e-9);
    EXPECT_NEAR(zdr[99], -0.8 + pida, 1e-9) << "in place";
}

TEST(DifferentialAttenuation, UncorrectedRaysDoNotChange) {
    const int n = 40;
    Values z(n, 10.0), zdr(n, -0.5), ah(n, 0.1), mask(n, 0.0), out(n, -7.0);
    Cradarpro radar;
    double gamma = -7.0, pida = -7.0;
    const auto run = [&](double dphi, double dr) {
        return radar.Adp_optimal(z.data(), zdr.data(), ah.data(), n, dr, 0.08, dphi, mask.data(),
                                 out.data(), gamma, pida);
    };
    EXPECT_EQ(run(20.0, 0.25), 0);
    EXPECT_EQ(run(kNan, 0.25), 0);
    std::fill(mask.begin(), mask.begin() + 21, 3.0);
    EXPECT_EQ(run(30.0, 0.25), 0) << "19 gates";
    mask[20] = 0.0;
    std::fill(zdr.begin(), zdr.end(), 3.0);
    EXPECT_EQ(run(30.0, 0.25), 0) << "gamma would have to be negative";
    EXPECT_EQ(out, Values(n, -7.0));
    EXPECT_EQ(gamma, -7.0);
    EXPECT_EQ(pida, -7.0);
    // Without attenuation every gamma fits alike: one step, then no change.
    std::fill(zdr.begin(), zdr.end(), -0.5);
    std::fill(ah.begin(), ah.end(), 0.0);
    EXPECT_EQ(run(30.0, 0.25), 1);
    EXPECT_DOUBLE_EQ(gamma, 0.011);
    // A path that is nearly nothing: the steps are bounded.
    std::fill(ah.begin(), ah.end(), 1e-9);
    EXPECT_EQ(run(30.0, 0.25), 1);
    EXPECT_GT(gamma, 0.011);
}

/* Twelve stretches of ten hot gates and one other gate each: the second stretch is broken. */
TEST(HotSpots, TenAreRecordedAndAllAreFlagged) {
    const std::size_t n = 12 * 11;
    enum Break { kMaskNan, kMasked, kReflectivity, kReflectivityNan, kCorrelation };
    for (const Break kind : {kMaskNan, kMasked, kReflectivity, kReflectivityNan, kCorrelation}) {
        Values z(n, 1e5), phidp, rhohv(n, 0.7), mask(n, 0.0), flag(n, -7.0), spots(40, -7.0);
        for (std::size_t g = 0; g < n; ++g) {
            phidp.push_back(3.0 * static_cast<double>(g));
        }
        for (std::size_t g = 10; g < n; g += 11) {
            z[g] = 100.0;
        }
        if (kind == kMaskNan) {
            mask[16] = kNan;
        }
        if (kind == kMasked) {
            mask[16] = 3.0;
        }
        if (kind == kReflectivity) {
            z[16] = 31600.0;
        }
        if (kind == kReflectivityNan) {
            z[16] = kNan;
        }
        if (kind == kCorrelation) {
            rhohv[16] = 0.69;
        }
        EXPECT_EQ(Cradarpro().findHotSpot(phidp.data(), z.data(), rhohv.data(), mask.data(), 0.25,
                                          static_cast<int>(n), flag.data(), spots.data()),
                  11);
        EXPECT_EQ(spots[0], 11.0);
        for (std::size_t k = 0; k < 10; ++k) {
            const double first = k == 0 ? 0.0 : 11.0 * static_cast<double>(k + 1);
            const Values spot(&spots[4 * k + 1], &spots[4 * k + 4]);
            EXPECT_EQ(spot, Values({first, first + 9, 27.0})) << k;
        }
        for (std::size_t g = 0; g < n; ++g) {
            EXPECT_EQ(flag[g], g / 11 == 1 || g % 11 == 10 ? 0.0 : 1.0) << g;
        }
    }
}

TEST(HotSpots, LengthAndRiseAreExclusiveBounds) {
    const struct {
        int gates;
        double rise;
        int count;
    } runs[] = {{9, 30.0, 0}, {10, 30.0, 1}, {10, 20.0, 0}, {10, 20.5, 1}};
    Cradarpro radar;
    for (const auto& run : runs) {  // 9 gates of 0.25 km: 2 km from first to last
        const int n = 30;
        Values z(n, 100.0), phidp(n, 0.0), rhohv(n, 1.0), mask(n, 0.0), flag(n), spots(40);
        for (int g = 5; g < 5 + run.gates; ++g) {
            z[static_cast<std::size_t>(g)] = 1e5;
            phidp[static_cast<std::size_t>(g)] = run.rise * (g - 5) / (run.gates - 1);
        }
        EXPECT_EQ(radar.findHotSpot(phidp.data(), z.data(), rhohv.data(), mask.data(), 0.25, n,
                                    flag.data(), spots.data()),
                  run.count);
        if (run.count == 0) {
            continue;
        }
        EXPECT_EQ(Values(spots.begin(), spots.begin() + 4),
                  Values({1.0, 5.0, 4.0 + run.gates, run.rise}));
    }
}

}  // namespace
