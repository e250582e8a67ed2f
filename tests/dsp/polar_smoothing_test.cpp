/* Masked means of polar fields, and the margin that decides which gates the series may give. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "dsp/windows/decibel_mean.h"
#include "support/bits.h"
#include "support/literal/toolkit.h"
#include "support/rough_fields.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

using Values = std::vector<float>;

/* What a field may hold, from well-behaved to everything a file can contain. */
enum class Kind { kReflectivity, kSteps, kSmall, kRough };

float drawValue(Kind kind, std::mt19937& random) {
    std::normal_distribution<float> normal(20.0f, 15.0f);
    const float value = normal(random);
    switch (kind) {
        case Kind::kReflectivity:
            return value;
        case Kind::kSteps:  // many zeros and equal neighbours
            return std::round(value / 20.0f) / 2.0f;
        case Kind::kSmall:  // means near 0 dB: the last bits are worth least there
            return (value - 20.0f) * 1e-4f;
        case Kind::kRough:
            return clutter::test::roughValue(random);
    }
    return value;
}

Values drawField(std::size_t n, Kind kind, std::mt19937& random) {
    Values field;
    while (field.size() < n) {
        field.push_back(drawValue(kind, random));
    }
    return field;
}

/* Unmasked, speckled, or in long runs with whole rays of noise. */
Values drawMask(int ngates, int nrays, unsigned pattern, std::mt19937& random) {
    Values mask;
    for (int i = 0; i < ngates * nrays; ++i) {
        const bool run = i / 150 % 2 == 0 || i / ngates % 4 == 1;
        const bool out = pattern == 1 ? random() % 3 == 0 : pattern == 2 ? run : false;
        mask.push_back(clutter::test::maskValue(out, random));
    }
    return mask;
}

struct Round {
    int ngates, nrays, wgates, wrays;
};

Round drawRound(unsigned round, std::mt19937& random) {
    const auto upTo = [&random](unsigned most) { return 1 + static_cast<int>(random() % most); };
    if (round % 4 == 0) {
        return {upTo(900), upTo(6), 7, 1};
    }
    if (round % 4 == 1) {
        return {upTo(6), upTo(6), 2 + upTo(20), upTo(20)};  // wider than the scan
    }
    return {upTo(500), upTo(12), 1 + upTo(9), upTo(6)};  // also even
}

TEST(PolarSmoothing, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(21);
    CDSP dsp;
    for (unsigned i = 0; i < 400; ++i) {
        const auto [ngates, nrays, wgates, wrays] = drawRound(i, random);
        const auto n = static_cast<std::size_t>(ngates) * static_cast<std::size_t>(nrays);
        Values in = drawField(n, static_cast<Kind>(random() % 4), random);
        Values mask = drawMask(ngates, nrays, i % 3, random);
        for (const bool decibels : {false, true}) {
            Values expected(n), out(n, 7.0f), inPlace = in, maskAgain = mask;
            literal::smoothPolar(in.data(), expected.data(), mask.data(), ngates, nrays, wgates,
                                 wrays, decibels);
            dsp.Conv2DPPI(in.data(), out.data(), mask.data(), ngates, nrays, wgates, wrays,
                          decibels ? 2 : 0);
            ASSERT_TRUE(clutter::test::sameBits(out, expected))
                << ngates << " x " << nrays << ", window " << wgates << " x " << wrays;
            dsp.Conv2DPPI(inPlace.data(), inPlace.data(), mask.data(), ngates, nrays, wgates, wrays,
                          decibels ? 1 : 0);
            ASSERT_TRUE(clutter::test::sameBits(inPlace, expected)) << "in place";
            ASSERT_TRUE(clutter::test::sameBits(mask, maskAgain)) << "the mask is only read";
            dsp.Conv2DPPI(in.data(), maskAgain.data(), maskAgain.data(), ngates, nrays, wgates,
                          wrays, decibels ? 1 : 0);
            ASSERT_TRUE(clutter::test::sameBits(maskAgain, expected)) << "over the mask";
        }
    }
}

TEST(PolarSmoothing, WindowsFarLargerThanTheScan) {
    std::mt19937 random(22);
    CDSP dsp;
    Values in = drawField(6, Kind::kReflectivity, random);
    Values mask = {0.0f, 1.0f, 0.0f, 0.0f, 1.0f, 0.0f};
    for (const bool decibels : {false, true}) {
        Values expected(6), out(6);
        literal::smoothPolar(in.data(), expected.data(), mask.data(), 3, 2, 3001, 501, decibels);
        dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 3, 2, 3001, 501, decibels ? 1 : 0);
        EXPECT_TRUE(clutter::test::sameBits(out, expected)) << decibels;
    }
}

TEST(PolarSmoothing, MeansOfFewMembers) {
    CDSP dsp;
    Values in = {10.0f, 40.0f, 20.0f}, mask = {0.0f, 5.0f, 0.0f}, out(3);
    dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 3, 1, 3, 1, 1);
    EXPECT_FLOAT_EQ(out[0], 10.0f) << "the edge gate twice";
    EXPECT_NEAR(out[1], 17.4036f, 1e-4) << "a masked gate gets its neighbours' mean too";
    dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 3, 1, 3, 1, 0);
    EXPECT_EQ(out, (Values{10.0f, 15.0f, 20.0f}));
    mask = {1.0f, kNan, 1.0f};
    for (const int logmode : {0, 1}) {
        std::fill(out.begin(), out.end(), -1.0f);
        dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 3, 1, 3, 1, logmode);
        EXPECT_EQ(out, in) << "without members the values stay";
    }
}

TEST(PolarSmoothing, RaysWrapAndGatesDoNot) {
    CDSP dsp;
    Values in = {9.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 3.0f, 6.0f}, mask(8, 0.0f), out(8);
    dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 2, 4, 1, 3, 0);
    EXPECT_EQ(out, (Values{4.0f, 2.0f, 3.0f, 0.0f, 1.0f, 2.0f, 4.0f, 2.0f}));
    dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 2, 4, 3, 1, 0);
    EXPECT_EQ(out, (Values{6.0f, 3.0f, 0.0f, 0.0f, 0.0f, 0.0f, 4.0f, 5.0f}));
}

TEST(PolarSmoothing, WhatIsRejectedAndWhatIsAnEmptyWindow) {
    CDSP dsp;
    Values in = {1.0f, 2.0f, 3.0f, 4.0f}, mask(4, 0.0f), out(4, -1.0f);
    const int rejected[][4] = {{2, 2, 1, 1},  {2, 2, 0, 3},  {2, 2, -1, -1},       {2, 2, -3, 3},
                               {0, 2, 3, 3},  {2, 0, 3, 3},  {2, -1, 3, 3},        {-2, 2, 3, 3},
                               {2, 2, 3, -1}, {2, 2, -1, 3}, {2, 2, -50000, 50000}};
    for (const auto& [ngates, nrays, wgates, wrays] : rejected) {
        dsp.Conv2DPPI(in.data(), out.data(), mask.data(), ngates, nrays, wgates, wrays, 0);
    }
    dsp.Conv2DPPI(nullptr, out.data(), mask.data(), 2, 2, 3, 3, 0);
    dsp.Conv2DPPI(in.data(), out.data(), nullptr, 2, 2, 3, 3, 1);
    dsp.Conv2DPPI(in.data(), nullptr, mask.data(), 2, 2, 3, 3, 1);
    EXPECT_EQ(out, Values(4, -1.0f));
    for (const int size : {-3, -2, -65536}) {  // the last one's square leaves 32 bits
        std::fill(out.begin(), out.end(), -1.0f);
        dsp.Conv2DPPI(in.data(), out.data(), mask.data(), 2, 2, size, size, 1);
        EXPECT_EQ(out, in) << size;
    }
}

/* The certain gates rely on this: the series differ from the C library by much less than the
 * margin. */
TEST(DecibelMean, PowersStayFarWithinTheMargin) {
    std::mt19937 random(23);
    std::uniform_real_distribution<float> uniform(-300.0f, 300.0f);
    double worst = 0.0;
    for (int i = 0; i < 300000; ++i) {
        const float value = i < 601 ? static_cast<float>(i - 300) : uniform(random);
        const float lane = 1.0f;
        double power = 0.0;
        clutter::dsp::powersOf(&value, &lane, &power, 1);
        const double exact = std::pow(10.0, 0.1 * static_cast<double>(value));
        worst = std::max(worst, std::fabs(power / exact - 1.0) * 10.0 / std::log(10.0));
    }
    EXPECT_LT(worst, clutter::dsp::roundingMargin(1) / 10.0) << "dB";
}

TEST(DecibelMean, PowersOutsideTheSeriesRange) {
    const struct {
        float value, lane;
        double power;
    } table[] = {
        {10.0f, 0.0f, 0.0},          {kNan, 0.0f, 0.0},
        {-4001.0f, 1.0f, 0.0},       {-kInfinity, 1.0f, 0.0},
        {-3000.0f, 1.0f, kInfinity}, {-301.0f, 1.0f, kInfinity},
        {301.0f, 1.0f, kInfinity},   {kInfinity, 1.0f, kInfinity},
        {kNan, 1.0f, kNan},          {-0.0f, 1.0f, 1.0},
    };
    for (const auto& [value, lane, expected] : table) {
        double power = -1.0;
        clutter::dsp::powersOf(&value, &lane, &power, 1);
        EXPECT_TRUE(clutter::test::sameBits(power, expected)) << value << " gave " << power;
    }
}

TEST(DecibelMean, LogarithmsStayFarWithinTheMargin) {
    std::mt19937 random(25);
    std::uniform_real_distribution<double> exponent(-99.0, 36.0);
    double worst = 0.0;
    for (int i = 0; i < 300000; ++i) {
        const double sum = std::pow(10.0, exponent(random));
        const float count = static_cast<float>(1 + random() % 100);
        double level = sum;
        clutter::dsp::toDecibels(&level, &count, 1);
        const double exact = 10.0 * std::log10(sum / static_cast<double>(count));
        worst = std::max(worst, std::fabs(level - exact));
    }
    EXPECT_LT(worst, clutter::dsp::roundingMargin(1) / 10.0) << "dB";
}

TEST(DecibelMean, IsCertainOnlyWithinTheMargin) {
    std::mt19937 random(24);
    std::uniform_real_distribution<double> exponent(-99.0, 30.0);
    for (int i = 0; i < 200000; ++i) {
        double sum = std::pow(10.0, exponent(random) * (i % 2 == 0 ? 1.0 : 1e-3));
        const float count = static_cast<float>(1 + random() % 100);
        const double exact = 10.0 * std::log10(sum / static_cast<double>(count));
        const float own = -1.0f;
        float result = 0.0f;
        std::int32_t uncertain = 7;
        // With a tenth of the margin, certain results must still be right.
        (void)clutter::dsp::decibelsOf(&sum, &count, &own, clutter::dsp::roundingMargin(1) / 10.0,
                                       &result, &uncertain, 1);
        ASSERT_TRUE(uncertain == 1 || result == static_cast<float>(exact)) << exact;
    }
}

/* Each member of a sum of doubles may add half a unit in the last place, in decibels. */
TEST(DecibelMean, TheMarginGrowsWithTheSum) {
    for (const int members : {1, 1000, 1000000}) {
        EXPECT_GT(clutter::dsp::roundingMargin(members), members * 0x1p-53 * 10.0 / std::log(10.0));
    }
}

TEST(DecibelMean, IsUncertainPastTheRangeOfPowers) {
    double sums[] = {std::numeric_limits<double>::infinity(),
                     1.0,
                     1e-99,
                     1e-99,
                     100.0,
                     static_cast<double>(kNan)};
    const float counts[] = {1.0f, 1.0f, 1.0f, 0.0f, 1.0f, 1.0f};
    const float own[] = {5.0f, 5.0f, 5.0f, 5.0f, 5.0f, 5.0f};
    float result[6];
    std::int32_t uncertain[6];
    EXPECT_TRUE(clutter::dsp::decibelsOf(sums, counts, own, 4e-12, result, uncertain, 6));
    EXPECT_EQ(std::vector<int>(uncertain, uncertain + 6), (std::vector<int>{1, 1, 0, 0, 0, 0}));
    EXPECT_EQ(result[2], -990.0f);
    EXPECT_EQ(result[3], 5.0f) << "no member";
    EXPECT_EQ(result[4], 20.0f);
    EXPECT_TRUE(std::isnan(result[5]));
}

}  // namespace
