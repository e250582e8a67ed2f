/*
 * The attenuation search: screening must leave the winner that the plain definition selects.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "corrections/attenuation/attenuation_search.h"
#include "corrections/attenuation/trial_lanes.h"
#include "corrections/attenuation/trial_screen.h"
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
                if (random() % 2 == 0) {
                    continue;
                }
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
TEST(AttenuationSearch, NearTiesAreComparedExactly) {
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
            while (high < 0.3 && above(high) == above(low)) {
                high += 0.01;
            }
            if (above(high) == above(low)) {
                continue;
            }
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

/* The forward solution has poles; reflectivity may be NaN, zero, infinite or negative. */
TEST(AttenuationSearch, OddRays) {
    const struct {
        const char* name;
        void (*change)(AttenuationRay&);
    } rays[] = {
        {"strong echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) {
                 z *= 300.0;
             }
         }},
        {"very strong echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) {
                 z *= 1e6;
             }
         }},
        {"weak echoes",
         [](AttenuationRay& r) {
             for (double& z : r.z) {
                 z *= 1e-5;
             }
         }},
        {"NaN in the phase", [](AttenuationRay& r) { r.phidp[60] = kNan; }},
        {"infinite phase", [](AttenuationRay& r) { r.phidp[60] = HUGE_VAL; }},
        {"NaN in z", [](AttenuationRay& r) { r.z[60] = kNan; }},
        {"infinite z", [](AttenuationRay& r) { r.z[60] = HUGE_VAL; }},
        {"negative z", [](AttenuationRay& r) { r.z[60] = -1.0; }},
        {"no echo at one gate", [](AttenuationRay& r) { r.z[60] = 0.0; }},
        {"no echo at all", [](AttenuationRay& r) { r.z.assign(r.z.size(), 0.0); }},
        {"oddities at masked gates",
         [](AttenuationRay& r) {
             r.z[60] = r.phidp[60] = kNan;
             r.mask[60] = 3.0;
         }},
        {"no rise", [](AttenuationRay& r) { r.dphi = 0.0; }},
        {"falling phase", [](AttenuationRay& r) { r.dphi = -20.0; }},
        {"large rise", [](AttenuationRay& r) { r.dphi = 2000.0; }},
        {"no spacing", [](AttenuationRay& r) { r.dr = 0.0; }},
        {"backward spacing", [](AttenuationRay& r) { r.dr = -0.25; }},
        {"all gates masked", [](AttenuationRay& r) { r.mask.assign(r.mask.size(), kNan); }},
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
        const unsigned share = 1 + round % 4;  // 1: there is nothing else
        for (double& z : ray.z) {
            if (random() % share == 0) {
                z = std::pow(10.0, exponent(random));
            }
        }
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

}  // namespace
