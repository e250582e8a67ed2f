/* The classifiers of precipitation and clutter: two classes and four. */
#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "fuzzy/classifiers/precipitation_clutter.h"
#include "support/directories.h"
#include "support/literal/classification.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
const char* const kTags[9] = {"sZhh", "sZdr", "sPdp", "sRhv", "Vel", "LDR", "", "Rhv", "Wid"};
const char* const kSuffixes[4] = {"clutter", "precipi", "seaclut", "turclut"};

/* One of the classifiers with a directory of rough tables, and the same as a literal rule base. */
struct System {
    std::size_t classes;
    TempDir directory;
    std::string prefix = directory.path() + "/";
    literal::RuleBase base;
    Cradarpro radar;

    explicit System(std::size_t count) : classes(count) {
        std::mt19937 random(31);
        for (std::size_t c = 0; c < classes; ++c) {
            base.classes.push_back(static_cast<float>(c));
        }
        for (int i = 0; i < 9; ++i) {
            base.functions.emplace_back();
            for (std::size_t c = 0; c < classes; ++c) {
                const literal::Function likelihood = {c == 1 ? "complement" : "same", {}, {}, {}};
                base.functions.back().push_back(i == 6 ? likelihood
                                                       : roughTable(random, 20.0, true));
                if (i != 6) {
                    writeFunction(file(i, c), base.functions.back()[c]);
                }
            }
        }
    }
    std::string file(int input, std::size_t c) const {
        return prefix + "cal_mf_" + kTags[input] + "_" + kSuffixes[c] + ".dat";
    }
    int classify(float* const (&in)[9], std::vector<float>& out, double* weights = nullptr) {
        return (radar.*operation())(prefix.data(), in[0], in[1], in[2], in[3], in[4], in[5], in[6],
                                    in[7], in[8], out.data(), static_cast<int>(out.size()), weights,
                                    0);
    }
    auto operation() const -> decltype(&Cradarpro::PrecipitationClutterClassification) {
        return classes == 2 ? &Cradarpro::PrecipitationClutterClassification
                            : &Cradarpro::PrecipitationAllClutterClassification;
    }
};

class Classifier : public testing::TestWithParam<std::size_t> {};

/* An absent input has degree 1 in all classes, in sums as in products. */
TEST_P(Classifier, EveryKindOfSubsetGivesTheLiteralClasses) {
    System system(GetParam());
    std::mt19937 random(4);
    std::uniform_real_distribution<float> uniform(-2.0f, 22.0f);
    const std::size_t n = 600;
    std::vector<std::vector<float>> values(9, std::vector<float>(n));
    for (auto& input : values) {
        for (float& value : input) {
            value = random() % 20 == 0 ? kNan : uniform(random);
        }
    }
    double weights[9] = {0.5, 1, 2, 3, 0, -1, 1, 1, 4};
    system.base.weights.assign(weights, weights + 9);
    std::vector<int> seen(system.classes + 1, 0);
    for (unsigned subset = 1; subset < 512; subset += subset < 16 ? 1 : 11) {
        float* in[9];
        std::vector<const float*> inputs;
        system.base.rules.assign(system.classes, {});
        for (int i = 0; i < 9; ++i) {
            const bool given = (subset >> i & 1) != 0;
            in[i] = given ? values[static_cast<std::size_t>(i)].data() : nullptr;
            inputs.push_back(in[i]);
            for (std::size_t c = 0; c < system.classes; ++c) {
                system.base.rules[c].push_back(given ? static_cast<int>(c) : -1);
            }
        }
        for (const bool product : {true, false}) {
            system.base.product = product;
            std::vector<float> out(n, 99.0f), expected(n);
            ASSERT_EQ(system.classify(in, out, product ? nullptr : weights), 1);
            literal::classify(system.base, inputs, expected.data(), static_cast<int>(n));
            ASSERT_EQ(out, expected) << "inputs " << subset << (product ? ", product" : ", sum");
            for (const float c : out) {
                ++seen[static_cast<std::size_t>(c + 1.0f)];
            }
        }
    }
    for (const int count : seen) {
        EXPECT_GT(count, 0) << "a class that never came out";
    }
}

TEST_P(Classifier, NamesTheFirstMissingFileAndWritesNothing) {
    System system(GetParam());
    std::vector<float> values(3, 5.0f), out(3, 99.0f);
    float* one[9] = {nullptr, nullptr, values.data()};
    const std::string missing = system.file(2, system.classes - 1);
    std::remove(missing.c_str());
    testing::internal::CaptureStdout();
    EXPECT_EQ(system.classify(one, out), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Membership function not found: " + missing + "!\n");
    system.prefix.pop_back();  // the name is used as formed, without a separator too
    testing::internal::CaptureStdout();
    EXPECT_EQ(system.classify(one, out), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Membership function not found: " + system.prefix + "cal_mf_sPdp_clutter.dat!\n");
    EXPECT_EQ(out, std::vector<float>(3, 99.0f));
    float* nothing[9] = {};
    EXPECT_EQ(system.classify(nothing, out), 0);
    EXPECT_EQ(out, std::vector<float>(3, -1.0f));
    EXPECT_EQ((system.radar.*system.operation())(nullptr, values.data(), nullptr, nullptr, nullptr,
                                                 nullptr, nullptr, nullptr, nullptr, nullptr,
                                                 nullptr, 3, nullptr, 1),
              0);
}

TEST_P(Classifier, LikelihoodAloneNeedsNoFiles) {
    System system(GetParam());
    system.prefix = "/nowhere/";
    float pdf[] = {0.8f, 0.2f, 0.5f, kNan};
    float* const in[9] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, pdf};
    std::vector<float> out(4);
    ASSERT_EQ(system.classify(in, out), 1);
    EXPECT_EQ(out, (std::vector<float>{0.0f, 1.0f, -1.0f, 0.0f}));
}

INSTANTIATE_TEST_SUITE_P(Classes, Classifier, testing::Values(2u, 4u));

TEST(AllClutter, TheEarliestOfEquallyStrongClassesWins) {
    System four(4);
    std::vector<float> values(3, 5.0f), likelihood = {0.8f, 0.2f, 0.5f}, out(3, 99.0f);
    float* in[9];
    std::fill_n(in, 9, values.data());
    in[6] = likelihood.data();
    const double degrees[4] = {0.2, 0.3, 0.9, 0.9};
    for (int i = 0; i < 9; ++i) {
        for (std::size_t c = 0; c < 4 && i != 6; ++c) {
            writeText(four.file(i, c), "0 " + std::to_string(degrees[c]) + "\n");
        }
    }
    ASSERT_EQ(four.classify(in, out), 1);
    EXPECT_EQ(out, std::vector<float>(3, 2.0f));
}

/* Names and rules as hosts see them in the engine. */
TEST(AllClutter, EngineHasItsNamesAndRules) {
    using namespace clutter::fuzzy;
    float value = 1.0f;
    float* const arrays[kInputCount] = {&value};
    const PrecipitationClutterEngine engine("d/", arrays, kAllClutter);
    EXPECT_STREQ(engine.inputs[0].mfs[2].name, "sea clutter  ");
    EXPECT_STREQ(engine.inputs[1].mfs[2].name, "sea clutter");
    EXPECT_STREQ(engine.inputs[8].mfs[3].type, "d/cal_mf_Wid_turclut.dat");
    EXPECT_EQ(engine.outputs[0].maxval, 4.0f);
    const short expected[4][3] = {{0, -1, 0}, {1, -1, 1}, {2, 2, 2}, {3, 3, 3}};
    for (int k = 0; k < 4; ++k) {
        EXPECT_EQ(engine.rules[10 * k], expected[k][0]);
        EXPECT_EQ(engine.rules[10 * k + 1], expected[k][1]);
        EXPECT_EQ(engine.rules[10 * k + 9], expected[k][2]);
    }
}

/* The shipped functions: all classes of a quantity end in one degree, so that a value that is
 * missing or far beyond the physical range decides nothing. */
TEST(AllClutter, ShippedFunctionsEndAlike) {
    for (const char* tag : kTags) {
        if (*tag == '\0') {
            continue;
        }
        for (const char* suffix : kSuffixes) {
            const literal::Function f = literal::readFunction(
                std::string(kMembershipDirectory) + "cal_mf_" + tag + "_" + suffix + ".dat");
            ASSERT_FALSE(f.py.empty()) << tag << suffix;
            EXPECT_EQ(f.py.back(), 0.5) << tag << suffix;
            for (const double degree : f.py) {
                EXPECT_TRUE(degree > 0.0 && degree <= 1.0) << tag;
            }
        }
    }
}

/* Gates that are typical of their class come out as that class. */
TEST(AllClutter, ShippedFunctionsSeparateTypicalGates) {
    struct Row {
        float expected;
        float values[9];  // textures of Z, ZDR, PhiDP, RhoHV; V, LDR, -, RhoHV, width
    };
    const Row rows[] = {
        {0, {8.0f, 3.5f, 70.0f, 0.20f, 0.1f, -11.0f, 0.0f, 0.85f, 0.3f}},
        {1, {1.6f, 0.3f, 1.5f, 0.008f, 9.0f, -28.0f, 0.0f, 0.99f, 1.6f}},
        {2, {4.5f, 2.6f, 50.0f, 0.17f, 3.0f, -12.0f, 0.0f, 0.65f, 1.3f}},
        {3, {10.0f, 4.0f, 75.0f, 0.22f, 14.0f, -11.0f, 0.0f, 0.75f, 5.0f}},
    };
    Cradarpro radar;
    std::string dir = kMembershipDirectory;
    for (const Row& row : rows) {
        float in[9], out = 9.0f;
        std::copy_n(row.values, 9, in);
        ASSERT_EQ(radar.PrecipitationAllClutterClassification(dir.data(), in, in + 1, in + 2,
                                                              in + 3, in + 4, in + 5, nullptr,
                                                              in + 7, in + 8, &out, 1, nullptr, 1),
                  1);
        EXPECT_EQ(out, row.expected);
    }
}

}  // namespace
