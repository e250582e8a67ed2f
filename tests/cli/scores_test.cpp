/* Scores against a worked example and at their ends. */
#include "report/scores.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace cli {
namespace {

Confusion confusionOf(std::int64_t hits, std::int64_t falseAlarms, std::int64_t misses,
                      std::int64_t correctNegatives) {
    Confusion confusion{};
    confusion[kIsClutter][kIsClutter] = hits;
    confusion[kIsPrecipitation][kIsClutter] = falseAlarms;
    confusion[kIsClutter][kIsPrecipitation] = misses;
    confusion[kIsPrecipitation][kIsPrecipitation] = correctNegatives;
    return confusion;
}

TEST(Scores, CountEachPairOnceByTruthThenResult) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<float> truth{0, 0, 5, 5, 5, 3, 3, nan, 0, 1};
    const std::vector<double> result{0, 5, 5, 0, 3, 3, 5, 0, nan, 0};
    const Confusion confusion = compare(truth, result);
    const Confusion expected{{{1, 1, 0}, {1, 1, 1}, {0, 1, 1}}};
    EXPECT_EQ(confusion, expected);
    EXPECT_THROW(compare(truth, {0.0}), std::invalid_argument);
}

/* The best known worked example of these scores: tornado forecasts of 1884. */
TEST(Scores, MatchAWorkedExample) {
    const Scores scores = scoresOf(confusionOf(28, 72, 23, 2680));
    EXPECT_NEAR(scores.pod, 0.549, 5e-4);
    EXPECT_NEAR(scores.far, 0.720, 5e-4);
    EXPECT_NEAR(scores.csi, 0.228, 5e-4);
    EXPECT_NEAR(scores.hss, 0.355, 5e-4);
    EXPECT_NEAR(scores.kept, 0.974, 5e-4);
}

TEST(Scores, NoiseCountsAsClutterNotFoundAndPrecipitationNotTakenForClutter) {
    Confusion confusion = confusionOf(10, 5, 0, 0);
    confusion[kIsClutter][kIsNoise] = 30;
    confusion[kIsPrecipitation][kIsNoise] = 15;
    confusion[kIsNoise] = {1000, 1000, 1000};  // truth noise plays no part
    const Scores scores = scoresOf(confusion);
    EXPECT_DOUBLE_EQ(scores.pod, 0.25);
    EXPECT_DOUBLE_EQ(scores.far, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(scores.kept, 0.75);
}

TEST(Scores, SkillIsOneWhenPerfectZeroByChanceAndUndefinedWithoutEvents) {
    EXPECT_DOUBLE_EQ(scoresOf(confusionOf(7, 0, 0, 90)).hss, 1.0);
    EXPECT_DOUBLE_EQ(scoresOf(confusionOf(1, 9, 9, 81)).hss, 0.0);
    EXPECT_LT(scoresOf(confusionOf(0, 10, 10, 0)).hss, 0.0);
    const Scores nothing = scoresOf(Confusion{});
    for (const double score : {nothing.pod, nothing.far, nothing.csi, nothing.hss, nothing.kept}) {
        EXPECT_TRUE(std::isnan(score));
    }
}

}  // namespace
}  // namespace cli
