/* Textures with and without a mask: literal definition, ends, rejected arguments. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/bits.h"
#include "support/literal/classification.h"
#include "support/rough_fields.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::vector<float> roughField(int n, std::mt19937& random) {
    std::vector<float> field;
    for (int i = 0; i < n; ++i) {
        field.push_back(clutter::test::roughValue(random));
    }
    return field;
}

std::vector<float> roughMask(int n, std::mt19937& random) {
    std::vector<float> mask;
    for (int i = 0; i < n; ++i) {
        mask.push_back(clutter::test::maskValue(random() % 3 == 0, random));
    }
    return mask;
}

TEST(MeanStd, PopulationStatisticOfFewValues) {
    CDSP dsp;
    float values[] = {1.0f, 3.0f}, mean = -1.0f, std = -1.0f;
    EXPECT_EQ(dsp.GetMeanStd(values, 0, mean, std), -1);
    EXPECT_EQ(mean, -1.0f);
    EXPECT_EQ(dsp.GetMeanStd(values, 1, mean, std), 1);
    EXPECT_EQ(mean, 1.0f);
    EXPECT_EQ(std, 0.0f);
    EXPECT_EQ(dsp.GetMeanStd(values, 2, mean, std), 1);
    EXPECT_EQ(mean, 2.0f);
    EXPECT_EQ(std, 1.0f);
    values[0] = kNan;
    EXPECT_EQ(dsp.GetMeanStd(values, 2, mean, std), 1);
    EXPECT_TRUE(std::isnan(mean) && std::isnan(std));
}

TEST(PlainTexture, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(11);
    CDSP dsp;
    for (int round = 0; round < 150; ++round) {
        const int ngates = 1 + static_cast<int>(random() % 300);
        const int nrays = 1 + static_cast<int>(random() % 12);
        const short size = static_cast<short>(3 + 2 * (random() % 4));
        std::vector<float> in = roughField(ngates * nrays, random);
        std::vector<float> out(in.size(), 7.0f), expected(in.size(), 8.0f);
        ASSERT_EQ(dsp.GetNxNPointStd(in.data(), ngates, nrays, out.data(), size), 1);
        literal::plainTexture(in.data(), ngates, nrays, expected.data(), size);
        ASSERT_TRUE(clutter::test::sameBits(out, expected))
            << ngates << " x " << nrays << ", " << size;
    }
}

TEST(PlainTexture, CentreOfAThreeByThreeFieldFillsItAll) {
    CDSP dsp;
    std::vector<float> in = {1, 2, 3, 4, 5, 6, 7, 8, 9}, out(9, -1.0f);
    ASSERT_EQ(dsp.GetNxNPointStd(in.data(), 3, 3, out.data(), 3), 1);
    for (const float value : out) {
        EXPECT_FLOAT_EQ(value, std::sqrt(60.0f / 9.0f));
    }
}

TEST(PlainTexture, RejectedArgumentsLeaveTheOutputUntouched) {
    CDSP dsp;
    std::vector<float> in(9, 1.0f), out(9, -1.0f);
    for (const short size : {0, 1, 2, 4, -3, -1}) {
        EXPECT_EQ(dsp.GetNxNPointStd(in.data(), 3, 3, out.data(), size), -1) << size;
    }
    EXPECT_EQ(dsp.GetNxNPointStd(nullptr, 3, 3, out.data(), 3), -1);
    EXPECT_EQ(dsp.GetNxNPointStd(in.data(), 3, 3, nullptr, 3), -1);
    EXPECT_EQ(dsp.GetNxNPointStd(in.data(), 0, 3, out.data(), 3), -1);
    EXPECT_EQ(dsp.GetNxNPointStd(in.data(), 3, -1, out.data(), 3), -1);
    EXPECT_EQ(out, std::vector<float>(9, -1.0f));
}

TEST(MaskedTexture, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(12);
    CDSP dsp;
    for (int round = 0; round < 400; ++round) {
        const int ngates = 1 + static_cast<int>(random() % 400);
        const int nrays = 1 + static_cast<int>(random() % 9);
        int wgates = 1 + 2 * static_cast<int>(random() % 5);
        int wrays = 1 + 2 * static_cast<int>(random() % 8);  // also wider than the scan
        if (round % 3 == 0) {
            wgates = 5, wrays = 3;
        }
        if (wgates * wrays == 1) {
            wrays = 3;
        }
        std::vector<float> in = roughField(ngates * nrays, random);
        std::vector<float> mask = roughMask(ngates * nrays, random);
        if (round % 5 == 0) {  // whole rays of noise: windows are refilled after a gap
            for (int i = 0; i < ngates * nrays; ++i) {
                if (i / ngates % 3 != 0) {
                    mask[static_cast<std::size_t>(i)] = 3.0f;
                }
            }
        }
        std::vector<float> out(in.size(), 7.0f), expected(in.size(), 8.0f);
        ASSERT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), ngates, nrays, out.data(),
                                             wgates, wrays),
                  1);
        literal::maskedTexture(in.data(), mask.data(), ngates, nrays, expected.data(), wgates,
                               wrays);
        ASSERT_TRUE(clutter::test::sameBits(out, expected))
            << ngates << " x " << nrays << ", window " << wgates << " x " << wrays;
    }
}

TEST(MaskedTexture, RaysWrapAroundTheCircle) {
    CDSP dsp;
    const int ngates = 5, nrays = 360;
    std::vector<float> in(ngates * nrays, 0.0f), mask(in.size(), 0.0f), out(in.size());
    for (int g = 0; g < ngates; ++g) {
        in[static_cast<std::size_t>(359 * ngates + g)] = 3.0f;
    }
    ASSERT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), ngates, nrays, out.data(), 5, 3),
              1);
    EXPECT_FLOAT_EQ(out[2], std::sqrt(2.0f));                 // rays 359, 0 and 1: 3, 0, 0
    EXPECT_FLOAT_EQ(out[358 * ngates + 2], std::sqrt(2.0f));  // rays 357, 358 and 359
    EXPECT_EQ(out[357 * ngates + 2], 0.0f);
}

TEST(MaskedTexture, MaskedGatesGiveZeroAndEnterNoStatistic) {
    CDSP dsp;
    std::vector<float> in(15, 1.0f), mask(15, 0.0f), out(15);
    in[6] = kNan;
    in[8] = 1000.0f;
    mask[6] = 1.0f;
    mask[8] = kNan;
    ASSERT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), 5, 3, out.data(), 3, 3), 1);
    EXPECT_EQ(out, std::vector<float>(15, 0.0f));
    std::fill(mask.begin(), mask.end(), 0.0f);
    ASSERT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), 5, 3, out.data(), 3, 3), 1);
    EXPECT_TRUE(std::isnan(out[6])) << "values are not screened";
}

TEST(MaskedTexture, RejectedArgumentsLeaveTheOutputUntouched) {
    CDSP dsp;
    std::vector<float> in(9, 1.0f), mask(9, 0.0f), out(9, -1.0f);
    const int windows[][2] = {{1, 1}, {2, 3}, {3, 2}, {0, 3}, {-1, 3}, {3, -3}, {-3, -3}, {-1, -1}};
    for (const auto& [wgates, wrays] : windows) {
        EXPECT_EQ(
            dsp.GetNxNPointStdWithMask(in.data(), mask.data(), 3, 3, out.data(), wgates, wrays), -1)
            << wgates << " x " << wrays;
    }
    EXPECT_EQ(dsp.GetNxNPointStdWithMask(in.data(), nullptr, 3, 3, out.data(), 3, 3), -1);
    EXPECT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), 3, 0, out.data(), 3, 3), -1);
    EXPECT_EQ(out, std::vector<float>(9, -1.0f));
    // A window along the rays only has no gate border.
    EXPECT_EQ(dsp.GetNxNPointStdWithMask(in.data(), mask.data(), 3, 3, out.data(), 1, 3), 1);
    EXPECT_EQ(out, std::vector<float>(9, 0.0f));
}

}  // namespace
