/*
 * The whole attenuation correction of a ray, its draws included.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>

#include "clutterclassifier/Cradarpro.h"
#include "support/bits.h"
#include "support/rain_ray.h"

namespace {

using clutter::test::makeRainRay;
using literal::AttenuationRay;
using literal::Values;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Corrected {
    Values ah, zcorr, rebuilt, alpha, a, b;
    double dphi = -7.0, pia = -7.0;
    int result = -7;
};

Corrected correct(Cradarpro& radar, const AttenuationRay& ray, int alg, double dphiMin) {
    const std::size_t n = ray.z.size();
    Corrected c;
    for (Values* v : {&c.ah, &c.zcorr, &c.rebuilt, &c.alpha, &c.a, &c.b}) {
        v->assign(n, -7.0);
    }
    c.result = radar.Ah_optimal(ray.phidp.data(), ray.z.data(), ray.n(), ray.dr, ray.mask.data(),
                                c.ah.data(), c.zcorr.data(), c.rebuilt.data(), c.alpha.data(),
                                c.a.data(), c.b.data(), c.dphi, c.pia, alg,
                                ray.select.empty() ? nullptr : ray.select.data(), dphiMin);
    return c;
}

bool untouched(const Corrected& c) {
    for (const Values* v : {&c.ah, &c.zcorr, &c.rebuilt, &c.alpha, &c.a, &c.b}) {
        if (*v != Values(v->size(), -7.0)) {
            return false;
        }
    }
    return c.pia == -7.0;
}

/* The plain definition, draws included: a, b, then alpha, the generator reseeded before each. */
Corrected literalCorrection(Cradarpro& radar, AttenuationRay ray, int alg, double dphiMin) {
    EXPECT_TRUE(literal::measurePhase(ray));
    if (alg == 6) {
        ray.phi0 = 0.0;
        ray.dphi = dphiMin + 1;
    }
    double alpha0, a0, b0, range[6] = {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073};
    int count = 1, method = 0;
    radar.algs_attcor(alg, 1000, alpha0, a0, b0, range[0], range[1], range[2], range[3], range[4],
                      range[5], count, method);
    if (!ray.select.empty() && count != 1) {
        range[5] = 0.3;
    }
    Values drawn[3];
    for (int k = 0; k < 3; ++k) {
        std::srand(static_cast<unsigned>(std::rand() + std::time(nullptr)));
        for (int i = 0; i < count; ++i) {
            drawn[k].push_back(std::rand() * (range[2 * k + 1] - range[2 * k]) / 2147483647.0 +
                               range[2 * k]);
        }
    }
    const std::size_t best =
        static_cast<std::size_t>(literal::bestTrial(ray, drawn[2], drawn[0], drawn[1], method));
    const literal::TrialResult trial =
        literal::evaluateTrial(ray, drawn[2][best], drawn[0][best], drawn[1][best], method);
    Corrected c{trial.ah, Values(ray.z.size(), -7.0), trial.rebuilt, trial.alpha, trial.a, trial.b};
    c.result = 1;
    c.dphi = ray.dphi;
    c.pia = 0.0;
    for (std::size_t g = 0; g < ray.z.size(); ++g) {
        c.pia += 2 * c.ah[g] * ray.dr;
        if (ray.mask[g] == 0.0) {
            c.zcorr[g] = std::pow(10.0, (10 * std::log10(ray.z[g]) + c.pia) / 10);
        }
    }
    return c;
}

TEST(OptimalAttenuation, SameBitsAsThePlainDefinition) {
    for (const int alg : {0, 1, 2, 3, 4, 5, 6, 7, 8, 99}) {
        for (const bool selected : {false, true}) {
            AttenuationRay ray = makeRainRay(140, 300 + static_cast<unsigned>(alg));
            for (int g = 0; selected && g < ray.n(); ++g) {
                ray.select.push_back(g / 10 % 2);
            }
            Cradarpro radar;
            Corrected fast, plain;
            std::time_t before;
            do {  // both must draw within one second of the clock
                before = std::time(nullptr);
                std::srand(17);
                fast = correct(radar, ray, alg, 1.0);
                std::srand(17);
                plain = literalCorrection(radar, ray, alg, 1.0);
            } while (std::time(nullptr) != before);
            ASSERT_EQ(fast.result, 1);
            EXPECT_TRUE(clutter::test::sameBits(fast.ah, plain.ah)) << alg;
            EXPECT_TRUE(clutter::test::sameBits(fast.zcorr, plain.zcorr)) << alg;
            EXPECT_TRUE(clutter::test::sameBits(fast.rebuilt, plain.rebuilt)) << alg;
            EXPECT_TRUE(clutter::test::sameBits(fast.alpha, plain.alpha)) << alg;
            EXPECT_TRUE(clutter::test::sameBits(fast.a, plain.a)) << alg;
            EXPECT_TRUE(clutter::test::sameBits(fast.b, plain.b)) << alg;
            EXPECT_EQ(fast.dphi, plain.dphi) << alg;
            EXPECT_EQ(fast.pia, plain.pia) << alg;
        }
    }
}

/* Constant rain between two stretches of drizzle, whose attenuation and phase follow the nominal
 * coefficients: what the algorithms give back is known. */
TEST(OptimalAttenuation, ConstantRainIsRestored) {
    const double b = 0.78, a = 3e-5, alpha = 0.073;
    AttenuationRay ray;
    ray.dr = 0.1;
    Values truthDbz;
    double loss = 0.0;
    for (int g = 0; g < 300; ++g) {
        truthDbz.push_back(g < 20 || g >= 280 ? 0.0 : 45.0);
        const double ah = a * std::pow(10.0, 0.1 * truthDbz.back() * b);
        loss += ah * ray.dr;  // to the gate's middle and back
        ray.z.push_back(std::pow(10.0, 0.1 * (truthDbz.back() - loss)));
        ray.phidp.push_back(loss / alpha);
        ray.mask.push_back(0.0);
        loss += ah * ray.dr;
    }
    ASSERT_GT(loss, 5.0);
    // Searched a and alpha make up for each other in constant rain: there only the phase is known.
    const struct {
        int alg;
        double boundDb, boundDeg;
    } algorithms[] = {{0, 0.2, 1.0}, {1, 5.0, 4.0}, {2, 5.0, 4.0}, {3, 0.2, 1.0},
                      {4, 0.2, 1.0}, {5, 0.2, 1.0}, {6, 0.2, 1.0}, {8, 0.8, 1.0}};
    for (const auto& [alg, boundDb, boundDeg] : algorithms) {
        Cradarpro radar;
        const Corrected c = correct(radar, ray, alg, 5.0);
        ASSERT_EQ(c.result, 1) << alg;
        double worstDb = 0.0, worstDeg = 0.0;
        for (std::size_t g = 0; g < ray.z.size(); ++g) {
            worstDb = std::max(worstDb, std::fabs(10.0 * std::log10(c.zcorr[g]) - truthDbz[g]));
            worstDeg = std::max(worstDeg, std::fabs(c.rebuilt[g] - ray.phidp[g]));
            EXPECT_GE(c.zcorr[g], ray.z[g] * (1 - 1e-12)) << "a correction never lowers";
        }
        EXPECT_LT(worstDb, boundDb) << alg;
        EXPECT_LT(worstDeg, boundDeg) << alg;
        EXPECT_NEAR(c.pia, loss, boundDb) << alg;
        EXPECT_NEAR(c.dphi, alg == 6 ? 6.0 : loss / alpha, 0.1) << alg;
    }
}

TEST(OptimalAttenuation, MaskedGatesKeepTheirReflectivity) {
    AttenuationRay ray = makeRainRay(200, 9, 1.0, 0.2);
    for (int g = 40; g < 60; ++g) {
        const std::size_t at = static_cast<std::size_t>(g);
        if (ray.mask[at] != 0.0) {
            ray.z[at] = ray.phidp[at] = kNan;
        }
    }
    Cradarpro radar;
    for (const int alg : {0, 1, 2, 4, 5, 6, 8}) {
        const Corrected c = correct(radar, ray, alg, 1.0);
        ASSERT_EQ(c.result, 1);
        for (std::size_t g = 0; g < ray.z.size(); ++g) {
            if (ray.mask[g] == 0.0) {
                EXPECT_GE(c.zcorr[g], ray.z[g] * (1 - 1e-12)) << alg << ' ' << g;
            } else {
                EXPECT_EQ(c.zcorr[g], -7.0);
                EXPECT_EQ(c.ah[g], 0.0);
            }
        }
    }
}

TEST(OptimalAttenuation, UncorrectedRaysDoNotChange) {
    const AttenuationRay sound = makeRainRay(100, 3, 1.0, 0.0);
    Cradarpro radar;
    Corrected c = correct(radar, sound, -1, 1.0);
    EXPECT_EQ(c.result, -1);
    EXPECT_TRUE(untouched(c) && c.dphi == -7.0);
    c = correct(radar, sound, 4, 1e6);
    EXPECT_EQ(c.result, 0);
    EXPECT_TRUE(untouched(c) && c.dphi > 0.0) << "only the measured rise is stored";

    const struct {
        const char* name;
        int n, from, to;  // gates of precipitation
        int result;
    } runs[] = {
        {"run of 19", 100, 30, 48, 0},          {"run of 20 serves both", 100, 30, 49, 1},
        {"first 20 gates only", 100, 0, 19, 0}, {"gates 1 to 20", 100, 1, 20, 0},
        {"gates 2 to 21", 100, 2, 21, 1},       {"last 20 gates only", 100, 80, 99, 0},
        {"gates 79 to 98", 100, 79, 98, 1},     {"20 gates in all", 20, 0, 19, 0},
        {"21 gates in all", 21, 0, 20, 0},      {"22 gates in all", 22, 0, 21, 1},
    };
    for (const auto& run : runs) {
        AttenuationRay ray;
        for (int g = 0; g < run.n; ++g) {
            ray.z.push_back(1e4);
            ray.phidp.push_back(2.0 * g);
            ray.mask.push_back(g >= run.from && g <= run.to ? 0.0 : 3.0);
        }
        c = correct(radar, ray, 4, -1.0);
        EXPECT_EQ(c.result, run.result) << run.name;
        if (run.result == 0) {
            EXPECT_TRUE(untouched(c) && c.dphi == -7.0) << run.name;
        }
    }
}

TEST(OptimalAttenuation, ReflectivityMayBeCorrectedInPlace) {
    AttenuationRay ray = makeRainRay(150, 4);
    Cradarpro radar;
    const Corrected apart = correct(radar, ray, 4, 1.0);
    Corrected c = apart;
    ASSERT_EQ(radar.Ah_optimal(ray.phidp.data(), ray.z.data(), ray.n(), ray.dr, ray.mask.data(),
                               c.ah.data(), ray.z.data(), c.rebuilt.data(), c.alpha.data(),
                               c.a.data(), c.b.data(), c.dphi, c.pia, 4, nullptr, 1.0),
              1);
    for (std::size_t g = 0; g < ray.z.size(); ++g) {
        if (ray.mask[g] == 0.0) {
            EXPECT_EQ(ray.z[g], apart.zcorr[g]);
        }
    }
}

}  // namespace
