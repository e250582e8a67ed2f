#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/bits.h"
#include "support/literal.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
const char* const kTags[9] = {"sZhh", "sZdr", "sPdp", "sRhv", "Vel", "LDR", "", "Rhv", "Wid"};

/* Calls the classifier with the arrays of a table, null where there is none. */
int classify(Cradarpro& radar, const std::string& directory, float* const (&in)[9],
             std::vector<float>& out, double* weights = nullptr, int combination = 1) {
    std::string dir = directory;
    return radar.PrecipitationClutterClassification(
        dir.data(), in[0], in[1], in[2], in[3], in[4], in[5], in[6], in[7], in[8], out.data(),
        static_cast<int>(out.size()), weights, combination);
}

/* A directory with rough tables for all tags, and the same as a literal rule base. */
struct TableSet {
    TempDir directory;
    std::string prefix = directory.path() + "/";
    literal::RuleBase base;

    explicit TableSet(unsigned seed) {
        std::mt19937 random(seed);
        base.classes = {0.0f, 1.0f};
        for (int i = 0; i < 9; ++i) {
            if (i == 6) {
                base.functions.push_back({{"same", {}, {}, {}}, {"complement", {}, {}, {}}});
                continue;
            }
            base.functions.push_back(
                {roughTable(random, 20.0, true), roughTable(random, 20.0, true)});
            for (std::size_t c = 0; c < 2; ++c) writeFunction(file(i, c), base.functions.back()[c]);
        }
    }
    std::string file(int input, std::size_t c) const {
        return prefix + "cal_mf_" + kTags[input] + (c == 0 ? "_clutter.dat" : "_precipi.dat");
    }
};

TEST(Classifier, EveryKindOfSubsetGivesTheLiteralClasses) {
    TableSet tables(3);
    std::mt19937 random(4);
    std::uniform_real_distribution<float> uniform(-2.0f, 22.0f);
    const std::size_t n = 500;
    std::vector<std::vector<float>> values(9, std::vector<float>(n));
    for (auto& input : values) {
        for (float& value : input) value = random() % 20 == 0 ? kNan : uniform(random);
    }
    double weights[9] = {0.5, 1, 2, 3, 0, -1, 1, 1, 4};
    Cradarpro radar;
    for (unsigned subset = 1; subset < 512; subset += subset < 16 ? 1 : 7) {
        float* in[9];
        std::vector<const float*> inputs;
        tables.base.rules.assign(2, {});
        for (int i = 0; i < 9; ++i) {
            const bool given = (subset >> i & 1) != 0;
            in[i] = given ? values[static_cast<std::size_t>(i)].data() : nullptr;
            inputs.push_back(in[i]);
            for (int c = 0; c < 2; ++c)
                tables.base.rules[static_cast<std::size_t>(c)].push_back(given ? c : -1);
        }
        for (const bool product : {true, false}) {
            tables.base.product = product;
            tables.base.weights.assign(weights, weights + 9);
            std::vector<float> out(n, 99.0f), expected(n);
            ASSERT_EQ(classify(radar, tables.prefix, in, out, product ? nullptr : weights, 0), 1);
            literal::classify(tables.base, inputs, expected.data(), static_cast<int>(n));
            ASSERT_EQ(out, expected) << "inputs " << subset << (product ? ", product" : ", sum");
        }
    }
}

TEST(Classifier, LikelihoodAloneNeedsNoFiles) {
    Cradarpro radar;
    float pdf[] = {0.8f, 0.2f, 0.5f, kNan};
    float* const in[9] = {nullptr, nullptr, nullptr, nullptr, nullptr,
                          nullptr, pdf,     nullptr, nullptr};
    std::vector<float> out(4);
    ASSERT_EQ(classify(radar, "/nowhere/", in, out), 1);
    EXPECT_EQ(out, (std::vector<float>{0.0f, 1.0f, -1.0f, 0.0f}));
    std::string none;
    EXPECT_EQ(radar.PrecipitationClutterClassification(nullptr, nullptr, nullptr, nullptr, nullptr,
                                                       nullptr, nullptr, pdf, nullptr, nullptr,
                                                       nullptr, 4, nullptr, 1),
              0);
}

TEST(Classifier, NoInputIsUndecidedAndMissingFilesAreNamedAsFormed) {
    Cradarpro radar;
    float* none[9] = {};
    std::vector<float> out(3, 99.0f);
    EXPECT_EQ(classify(radar, "", none, out), 0);
    EXPECT_EQ(out, std::vector<float>(3, -1.0f));

    TableSet tables(5);
    float x[3] = {1, 2, 3};
    float* one[9] = {nullptr, x};
    out.assign(3, 99.0f);
    testing::internal::CaptureStdout();
    EXPECT_EQ(classify(radar, tables.directory.path(), one, out), 0);
    EXPECT_EQ(
        testing::internal::GetCapturedStdout(),
        "Membership function not found: " + tables.directory.path() + "cal_mf_sZdr_clutter.dat!\n");
    std::remove(tables.file(1, 1).c_str());
    testing::internal::CaptureStdout();
    EXPECT_EQ(classify(radar, tables.prefix, one, out), 0);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("cal_mf_sZdr_precipi.dat!"),
              std::string::npos);
    EXPECT_EQ(out, std::vector<float>(3, 99.0f));
}

TEST(Conversions, DecibelsAndBack) {
    Cradarpro radar;
    float values[] = {100.0f, 1.0f, 0.0f, -1.0f};
    radar.ZmmtoZdb(values, values, 4);
    EXPECT_EQ(values[0], 20.0f);
    EXPECT_EQ(values[2], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(values[3] != values[3]);
    radar.ZdBtoZmm(values, values, 2);
    EXPECT_EQ(values[0], 100.0f);
    radar.ZdBtoZmm(nullptr, values, 2);
    radar.ZmmtoZdb(values, values, -1);
    EXPECT_EQ(values[1], 1.0f);
}

TEST(IsolatedPixels, SameFlagsAsCountingEveryWindow) {
    std::mt19937 random(8);
    Cradarpro radar;
    for (int round = 0; round < 200; ++round) {
        const int ngates = 1 + static_cast<int>(random() % 30),
                  nrays = 1 + static_cast<int>(random() % 12);
        const int wgates = 2 + static_cast<int>(random() % 14),
                  wrays = 2 + static_cast<int>(random() % 30);
        const int most = static_cast<int>(random() % 6);
        std::vector<float> cls;
        for (int i = 0; i < ngates * nrays; ++i) {
            cls.push_back(random() % 8 == 0 ? 0.0f : random() % 9 == 0 ? kNan : 5.0f);
        }
        std::vector<float> flags(cls.size(), 7.0f), expected(cls.size());
        radar.GetIsolatedPixels(cls.data(), flags.data(), ngates, nrays, wgates, wrays, most);
        literal::isolatedPixels(cls.data(), expected.data(), ngates, nrays, wgates, wrays, most);
        ASSERT_EQ(flags, expected) << ngates << " x " << nrays << ", " << wgates << " x " << wrays;
        radar.GetIsolatedPixels(cls.data(), cls.data(), ngates, nrays, wgates, wrays, most);
        ASSERT_EQ(cls, expected) << "in place";
    }
}

TEST(IsolatedPixels, SmallWindowsAndNullArraysDoNothing) {
    Cradarpro radar;
    std::vector<float> cls(9, 5.0f), flags(9, 7.0f);
    cls[4] = 0.0f;
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 1, 3, 1);
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 0, 3, 3, 1);
    radar.GetIsolatedPixels(nullptr, flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags, std::vector<float>(9, 7.0f));
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags[4], 1.0f);
    cls[5] = 0.0f;
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags[4], 0.0f) << "two neighbours are not isolated";
}

}  // namespace
