/*
 * The attenuation search: screening must leave the winner that the plain definition selects.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>

#include "clutterclassifier/Cradarpro.h"
#include "corrections/attenuation_search.h"
#include "corrections/trial_lanes.h"
#include "corrections/trial_screen.h"
#include "support/bits.h"
#include "support/rain_ray.h"

namespace {

using namespace clutter::corrections;
using clutter::test::makeRainRay;
using literal::AttenuationRay;
using literal::Values;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Search searchOf(const AttenuationRay& ray, int method) {
    return {{ray.z.data(), ray.mask.data(), ray.phidp.data(), ray.n(), ray.dr, ray.dphi},
            method,
            ray.phi0,
            ray.select.empty() ? nullptr : ray.select.data()};
}

struct Ranges {
    double alpha[2], a[2], b[2];
};

Trials drawTrials(std::mt19937& random, int count, const Ranges& ranges) {
    const auto draw = [&](const double(&range)[2]) {
        std::uniform_real_distribution<double> uniform(range[0], range[1]);
        Values values;
        for (int i = 0; i < count; ++i) {
            values.push_back(range[0] == range[1] ? range[0] : uniform(random));
        }
        return values;
    };
    Trials trials;
    trials.alpha = draw(ranges.alpha);
    trials.a = draw(ranges.a);
    trials.b = draw(ranges.b);
    return trials;
}

constexpr Ranges kAlphaOnly{{0.02, 0.1}, {3e-5, 3e-5}, {0.78, 0.78}};
constexpr Ranges kAll{{0.02, 0.1}, {1e-5, 9e-5}, {0.65, 0.85}};
constexpr Ranges kAlphaAndB{{0.02, 0.1}, {3e-5, 3e-5}, {0.65, 0.85}};

TEST(TrialPowers, StayWithinTheStatedError) {
    double worst = 0.0;
    for (int i = -400000; i <= 400000; ++i) {
        const double x = i * 1e-3 + 1e-6;
        double power = 0.0;
        approximatePowers(&x, &power, 1);
        worst = std::max(worst, std::fabs(power / std::exp2(x) - 1.0));
    }
    EXPECT_LT(worst, 0.5 * kPowerError) << "the other half is for rounding";
    EXPECT_GT(worst, 0.1 * kPowerError) << "the bound need not be as wide";
}

TEST(AttenuationSearch, SelectsTheTrialOfThePlainDefinition) {
    const struct {
        int method;
        Ranges ranges;
    } searches[] = {{0, kAlphaOnly}, {0, kAlphaAndB}, {1, kAll},
                    {2, kAll},       {1, kAlphaOnly}, {2, kAlphaOnly}};
    std::mt19937 random(41);
    int screened = 0;
    for (unsigned round = 0; round < 60; ++round) {
        const double heaviness = std::pow(10.0, -1.0 + 2.5 * (round % 10) / 10.0);
        AttenuationRay ray = makeRainRay(50 + static_cast<int>(random() % 150), round, heaviness);
        for (int g = 0; round % 3 == 0 && g < ray.n(); ++g) {
            ray.select.push_back(random() % 2 == 0 ? 1.0 : random() % 2 == 0 ? 0.0 : kNan);
        }
        for (const auto& search : searches) {
            // Not only whole groups, and now and then many equal trials.
            Trials trials = drawTrials(random, 1 + static_cast<int>(random() % 90), search.ranges);
            for (std::size_t i = 1; round % 7 == 0 && i < trials.alpha.size(); ++i) {
                if (random() % 2 == 0) continue;
                trials.alpha[i] = trials.alpha[i - 1];
                trials.a[i] = trials.a[i - 1];
                trials.b[i] = trials.b[i - 1];
            }
            ASSERT_EQ(findBestTrial(searchOf(ray, search.method), trials),
                      literal::bestTrial(ray, trials.alpha, trials.a, trials.b, search.method))
                << "round " << round << ", method " << search.method;
            const auto left = canScreen(searchOf(ray, search.method), trials)
                                  ? screenTrials(searchOf(ray, search.method), trials)
                                  : std::vector<int>();
            screened += !left.empty() && left.size() <= trials.alpha.size() / 2 ? 1 : 0;
        }
    }
    EXPECT_GT(screened, 180) << "screening is to spare most trials the exact evaluation";
}

/* Trials that differ in their last bits, or by as much as the approximation may be off. */
TEST(AttenuationSearch, NearTiesAreSettledExactly) {
    std::mt19937 random(42);
    for (unsigned round = 0; round < 80; ++round) {
        const AttenuationRay ray = makeRainRay(120, 100 + round);
        for (const int method : {0, 1, 2}) {
            Trials trials = drawTrials(random, 40, kAll);
            const int best = literal::bestTrial(ray, trials.alpha, trials.a, trials.b, method);
            const Coefficients c = trials.at(best);
            const double unit = round % 2 == 0 ? std::numeric_limits<double>::epsilon() : 1e-10;
            const auto nudge = [&random, unit](double value) {
                const int steps = static_cast<int>(random() % 9) - 4;
                return value * (1.0 + steps * unit);
            };
            for (int i = 0; i < 20; ++i) {
                const std::size_t at = random() % trials.alpha.size();
                trials.alpha[at] = nudge(c.alpha);
                trials.a[at] = nudge(c.a);
                trials.b[at] = nudge(c.b);
            }
            ASSERT_EQ(findBestTrial(searchOf(ray, method), trials),
                      literal::bestTrial(ray, trials.alpha, trials.a, trials.b, method))
                << "round " << round << ", method " << method;
        }
    }
}

/* Two trials of different exponents whose costs agree to the last digits. */
TEST(AttenuationSearch, DifferentTrialsOfEqualCost) {
    int pairs = 0;
    for (unsigned round = 0; round < 30; ++round) {
        const AttenuationRay ray = makeRainRay(90, 500 + round);
        for (const int method : {0, 1, 2}) {
            const double target = literal::evaluateTrial(ray, 0.06, 3e-5, 0.70, method).cost;
            const auto above = [&](double alpha) {
                return literal::evaluateTrial(ray, alpha, 3e-5, 0.80, method).cost > target;
            };
            double low = 0.02, high = 0.02;
            while (high < 0.3 && above(high) == above(low)) high += 0.01;
            if (above(high) == above(low)) continue;
            for (int k = 0; k < 50; ++k) {
                const double middle = 0.5 * (low + high);
                (above(middle) == above(low) ? low : high) = middle;
            }
            ++pairs;
            for (const double alpha : {low, high}) {
                const Trials trials{{0.06, alpha, 0.06}, {3e-5, 3e-5, 3e-5}, {0.70, 0.80, 0.70}};
                ASSERT_EQ(findBestTrial(searchOf(ray, method), trials),
                          literal::bestTrial(ray, trials.alpha, trials.a, trials.b, method))
                    << "round " << round << ", method " << method;
            }
        }
    }
    EXPECT_GT(pairs, 30);
}

/* The forward solution has poles; reflectivity may be no number, zero, endless or negative. */
TEST(AttenuationSearch, OddRays) {
    const struct {
        const char* name;
        void (*change)(AttenuationRay&);
    } rays[] = {
        {"strong echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) z *= 300.0;
         }},
        {"very strong echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) z *= 1e6;
         }},
        {"weak echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) z *= 1e-5;
         }},
        {"NaN in the phase", [](AttenuationRay& r) { r.phidp[60] = kNan; }},
        {"endless phase", [](AttenuationRay& r) { r.phidp[60] = HUGE_VAL; }},
        {"NaN in z", [](AttenuationRay& r) { r.z[60] = kNan; }},
        {"endless z", [](AttenuationRay& r) { r.z[60] = HUGE_VAL; }},
        {"negative z", [](AttenuationRay& r) { r.z[60] = -1.0; }},
        {"no echo at one gate", [](AttenuationRay& r) { r.z[60] = 0.0; }},
        {"no echo at all", [](AttenuationRay& r) { r.z.assign(r.z.size(), 0.0); }},
        {"oddities where nothing takes part",
         [](AttenuationRay& r) {
             r.z[60] = r.phidp[60] = kNan;
             r.mask[60] = 3.0;
         }},
        {"no rise", [](AttenuationRay& r) { r.dphi = 0.0; }},
        {"falling phase", [](AttenuationRay& r) { r.dphi = -20.0; }},
        {"large rise", [](AttenuationRay& r) { r.dphi = 2000.0; }},
        {"no spacing", [](AttenuationRay& r) { r.dr = 0.0; }},
        {"backward spacing", [](AttenuationRay& r) { r.dr = -0.25; }},
        {"nothing takes part", [](AttenuationRay& r) { r.mask.assign(r.mask.size(), kNan); }},
    };
    std::mt19937 random(43);
    for (const auto& odd : rays) {
        for (unsigned round = 0; round < 6; ++round) {
            AttenuationRay ray = makeRainRay(130, 200 + round);
            odd.change(ray);
            for (const int method : {0, 1, 2}) {
                const Trials trials = drawTrials(random, 70, kAll);
                ASSERT_EQ(findBestTrial(searchOf(ray, method), trials),
                          literal::bestTrial(ray, trials.alpha, trials.a, trials.b, method))
                    << odd.name << ", method " << method << ", round " << round;
            }
        }
    }
}

/* Gates below -300 dBZ, as fill values leave them, must not cost the screening. */
TEST(AttenuationSearch, FaintGatesAreScreened) {
    std::mt19937 random(44);
    std::uniform_real_distribution<double> exponent(-110.0, -30.0);
    int screened = 0;
    for (unsigned round = 0; round < 60; ++round) {
        AttenuationRay ray = makeRainRay(120, 300 + round);
        const unsigned share = 1 + round % 4; /* 1: there is nothing else */
        for (double& z : ray.z)
            if (random() % share == 0) z = std::pow(10.0, exponent(random));
        ray.z[30] = 1e-110;
        for (const auto& [method, ranges] :
             {std::pair{0, kAlphaOnly}, {0, kAlphaAndB}, {1, kAll}, {2, kAll}}) {
            const Trials trials = drawTrials(random, 80, ranges);
            const Search search = searchOf(ray, method);
            ASSERT_TRUE(canScreen(search, trials));
            ASSERT_EQ(findBestTrial(search, trials),
                      literal::bestTrial(ray, trials.alpha, trials.a, trials.b, method))
                << "round " << round << ", method " << method;
            screened += screenTrials(search, trials).size() <= 40 ? 1 : 0;
        }
    }
    EXPECT_GT(screened, 120) << screened;
}

TEST(AttenuationSearch, ScreeningKeepsWithinItsBounds) {
    AttenuationRay ray = makeRainRay(60, 1, 1.0, 0.0);
    Trials trials{{0.06, 0.07}, {3e-5, 3e-5}, {0.1, 1.0}};
    EXPECT_TRUE(canScreen(searchOf(ray, 0), trials));
    trials.b[1] = std::nextafter(1.0, 2.0);
    EXPECT_FALSE(canScreen(searchOf(ray, 0), trials));
    trials.b[1] = 0.8;
    ray.z[30] = std::nextafter(1e-110, 0.0);
    EXPECT_FALSE(canScreen(searchOf(ray, 0), trials));
    ray.mask[30] = 3.0;
    EXPECT_TRUE(canScreen(searchOf(ray, 0), trials));
}

/* --- the whole correction of a ray --- */

struct Corrected {
    Values ah, zcorr, rebuilt, alpha, a, b;
    double dphi = -7.0, pia = -7.0;
    int result = -7;
};

Corrected correct(Cradarpro& radar, const AttenuationRay& ray, int alg, double dphiMin) {
    const std::size_t n = ray.z.size();
    Corrected c;
    for (Values* v : {&c.ah, &c.zcorr, &c.rebuilt, &c.alpha, &c.a, &c.b}) v->assign(n, -7.0);
    c.result = radar.Ah_optimal(ray.phidp.data(), ray.z.data(), ray.n(), ray.dr, ray.mask.data(),
                                c.ah.data(), c.zcorr.data(), c.rebuilt.data(), c.alpha.data(),
                                c.a.data(), c.b.data(), c.dphi, c.pia, alg,
                                ray.select.empty() ? nullptr : ray.select.data(), dphiMin);
    return c;
}

bool untouched(const Corrected& c) {
    for (const Values* v : {&c.ah, &c.zcorr, &c.rebuilt, &c.alpha, &c.a, &c.b}) {
        if (*v != Values(v->size(), -7.0)) return false;
    }
    return c.pia == -7.0;
}

double meanOf20(const Values& values, int first) {
    double sum = 0.0;
    for (int k = first; k < first + 20; ++k) sum += values[static_cast<std::size_t>(k)];
    return sum / 20;
}

/* The plain definition, draws included: a, b, then alpha, the generator reseeded before each. */
Corrected literalCorrection(Cradarpro& radar, AttenuationRay ray, int alg, double dphiMin) {
    const int n = ray.n();
    int first = 0, last = n - 21;
    const auto run = [&](int g) {
        for (int k = g; k < g + 20; ++k) {
            if (!(ray.mask[static_cast<std::size_t>(k)] == 0.0)) return false;
        }
        return true;
    };
    while (!run(first)) ++first;
    while (!run(last + 1)) --last;
    ray.phi0 = alg == 6 ? 0.0 : meanOf20(ray.phidp, first);
    ray.dphi = alg == 6 ? dphiMin + 1 : meanOf20(ray.phidp, last + 1) - ray.phi0;
    double alpha0, a0, b0, range[6] = {3e-5, 3e-5, 0.78, 0.78, 0.073, 0.073};
    int count = 1, method = 0;
    radar.algs_attcor(alg, 1000, alpha0, a0, b0, range[0], range[1], range[2], range[3], range[4],
                      range[5], count, method);
    if (!ray.select.empty() && count != 1) range[5] = 0.3;
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
            for (int g = 0; selected && g < ray.n(); ++g) ray.select.push_back(g / 10 % 2);
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
        if (ray.mask[at] != 0.0) ray.z[at] = ray.phidp[at] = kNan;
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

TEST(OptimalAttenuation, WhatIsNotCorrectedIsLeftAlone) {
    const AttenuationRay sound = makeRainRay(100, 3, 1.0, 0.0);
    Cradarpro radar;
    Corrected c = correct(radar, sound, -1, 1.0);
    EXPECT_EQ(c.result, -1);
    EXPECT_TRUE(untouched(c) && c.dphi == -7.0);
    c = correct(radar, sound, 4, 1e6);
    EXPECT_EQ(c.result, 0);
    EXPECT_TRUE(untouched(c) && c.dphi > 0.0) << "only the measured rise is told";

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

TEST(OptimalAttenuation, UnknownAlgorithmsGiveNoAttenuation) {
    const AttenuationRay ray = makeRainRay(100, 6);
    Cradarpro radar;
    for (const int alg : {7, 9, 42, -2}) {
        const Corrected c = correct(radar, ray, alg, 1.0);
        EXPECT_EQ(c.result, 1);
        EXPECT_EQ(c.pia, 0.0);
        EXPECT_EQ(c.ah, Values(100, 0.0));
        EXPECT_EQ(c.alpha, Values(100, 0.073));
        EXPECT_NEAR(c.zcorr[10], ray.z[10], 1e-9 * ray.z[10]);
    }
}

}  // namespace
