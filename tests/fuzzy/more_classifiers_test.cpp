/* The classifier of all clutter, and the frame of the hydrometeor classifier. */
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "fuzzy/classifiers/precipitation_clutter.h"
#include "support/directories.h"
#include "support/literal.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
const char* const kTags[9] = {"sZhh", "sZdr", "sPdp", "sRhv", "Vel", "LDR", "", "Rhv", "Wid"};
const char* const kSuffixes[4] = {"clutter", "precipi", "seaclut", "turclut"};
constexpr std::size_t kClasses = 4;

/* A directory with rough tables of four classes, and the same as a literal rule base. */
struct FourClasses {
    TempDir directory;
    std::string prefix = directory.path() + "/";
    literal::RuleBase base;
    Cradarpro radar;

    FourClasses() {
        std::mt19937 random(31);
        base.classes = {0.0f, 1.0f, 2.0f, 3.0f};
        for (int i = 0; i < 9; ++i) {
            base.functions.emplace_back();
            for (std::size_t c = 0; c < kClasses; ++c) {
                const literal::Function likelihood = {c == 1 ? "complement" : "same", {}, {}, {}};
                base.functions.back().push_back(i == 6 ? likelihood
                                                       : roughTable(random, 20.0, true));
                if (i != 6) writeFunction(file(i, c), base.functions.back()[c]);
            }
        }
    }
    std::string file(int input, std::size_t c) const {
        return prefix + "cal_mf_" + kTags[input] + "_" + kSuffixes[c] + ".dat";
    }
    int classify(float* const (&in)[9], std::vector<float>& out, double* weights = nullptr) {
        return radar.PrecipitationAllClutterClassification(
            prefix.data(), in[0], in[1], in[2], in[3], in[4], in[5], in[6], in[7], in[8],
            out.data(), static_cast<int>(out.size()), weights, 0);
    }
};

/* An absent input has degree 1 in all four classes, in sums as in products. */
TEST(AllClutter, EveryKindOfSubsetGivesTheLiteralClasses) {
    FourClasses four;
    std::mt19937 random(4);
    std::uniform_real_distribution<float> uniform(-2.0f, 22.0f);
    const std::size_t n = 600;
    std::vector<std::vector<float>> values(9, std::vector<float>(n));
    for (auto& input : values) {
        for (float& value : input) value = random() % 20 == 0 ? kNan : uniform(random);
    }
    double weights[9] = {0.5, 1, 2, 3, 0, -1, 1, 1, 4};
    four.base.weights.assign(weights, weights + 9);
    std::vector<int> seen(5, 0);
    for (unsigned subset = 1; subset < 512; subset += subset < 16 ? 1 : 11) {
        float* in[9];
        std::vector<const float*> inputs;
        four.base.rules.assign(kClasses, {});
        for (int i = 0; i < 9; ++i) {
            const bool given = (subset >> i & 1) != 0;
            in[i] = given ? values[static_cast<std::size_t>(i)].data() : nullptr;
            inputs.push_back(in[i]);
            for (int c = 0; c < 4; ++c)
                four.base.rules[static_cast<std::size_t>(c)].push_back(given ? c : -1);
        }
        for (const bool product : {true, false}) {
            four.base.product = product;
            std::vector<float> out(n, 99.0f), expected(n);
            ASSERT_EQ(four.classify(in, out, product ? nullptr : weights), 1);
            literal::classify(four.base, inputs, expected.data(), static_cast<int>(n));
            ASSERT_EQ(out, expected) << "inputs " << subset << (product ? ", product" : ", sum");
            for (const float c : out) ++seen[static_cast<std::size_t>(c + 1.0f)];
        }
    }
    for (const int count : seen) EXPECT_GT(count, 0) << "a class that never came out";
}

TEST(AllClutter, TheEarliestOfEquallyStrongClassesWins) {
    FourClasses four;
    std::vector<float> values(3, 5.0f), likelihood = {0.8f, 0.2f, 0.5f}, out(3, 99.0f);
    float* in[9];
    std::fill_n(in, 9, values.data());
    in[6] = likelihood.data();
    const double degrees[kClasses] = {0.2, 0.3, 0.9, 0.9};
    for (int i = 0; i < 9; ++i) {
        for (std::size_t c = 0; c < kClasses && i != 6; ++c) {
            writeText(four.file(i, c), "0 " + std::to_string(degrees[c]) + "\n");
        }
    }
    ASSERT_EQ(four.classify(in, out), 1);
    EXPECT_EQ(out, std::vector<float>(3, 2.0f));
    // The likelihood alone cannot tell one clutter from another.
    float* alone[9] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, likelihood.data()};
    ASSERT_EQ(four.classify(alone, out), 1);
    EXPECT_EQ(out, (std::vector<float>{0.0f, 1.0f, -1.0f}));
}

TEST(AllClutter, FailuresAreThoseOfTheOtherClassifier) {
    FourClasses four;
    std::vector<float> values(3, 5.0f), out(3, 99.0f);
    float* none[9] = {};
    EXPECT_EQ(four.classify(none, out), 0);
    EXPECT_EQ(out, std::vector<float>(3, -1.0f));
    float* one[9] = {nullptr, nullptr, values.data()};
    std::remove(four.file(2, 3).c_str());
    out.assign(3, 99.0f);
    testing::internal::CaptureStdout();
    EXPECT_EQ(four.classify(one, out), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Membership function not found: " + four.file(2, 3) + "!\n");
    EXPECT_EQ(out, std::vector<float>(3, 99.0f));
    EXPECT_EQ(four.radar.PrecipitationAllClutterClassification(
                  four.prefix.data(), values.data(), nullptr, nullptr, nullptr, nullptr, nullptr,
                  nullptr, nullptr, nullptr, nullptr, 3, nullptr, 1),
              0);
}

/* Names and rules as whoever looks into the engine sees them. */
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

/* The shipped functions: all classes of a quantity end in one degree, so that nothing is decided by
 * a value that is missing or far beyond what can be measured. */
TEST(AllClutter, ShippedFunctionsEndAlike) {
    for (const char* tag : kTags) {
        if (*tag == '\0') continue;
        for (const char* suffix : kSuffixes) {
            const literal::Function f = literal::readFunction(
                std::string(kMembershipDirectory) + "cal_mf_" + tag + "_" + suffix + ".dat");
            ASSERT_FALSE(f.py.empty()) << tag << suffix;
            EXPECT_EQ(f.py.back(), 0.5) << tag << suffix;
            for (const double degree : f.py) EXPECT_TRUE(degree > 0.0 && degree <= 1.0) << tag;
        }
    }
}

/* Gates that are typical of their class come out as that class. */
TEST(AllClutter, ShippedFunctionsTellTypicalGates) {
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

TEST(Hydrometeors, EveryInputEndsInNotFound) {
    Cradarpro radar;
    std::vector<float> x(3, 1.0f), out(3, 99.0f);
    struct Row {
        int input;
        const char* message;
    };
    const Row rows[] = {{0, "Membership function not found: Zh[4]!\n"},
                        {3, "Membership function not found: LDR[4]!\n"},
                        {4, "Membership function not found:  !\n"},
                        {5, "Membership function not found:  !\n"}};
    for (const Row& row : rows) {
        float* in[6] = {};
        in[row.input] = x.data();
        testing::internal::CaptureStdout();
        radar.HydrometeorClassification(nullptr, in[0], in[1], in[2], in[3], in[4], in[5],
                                        out.data(), 3);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.message) << row.input;
        EXPECT_EQ(out, std::vector<float>(3, 99.0f));
    }
    radar.HydrometeorClassification(nullptr, x.data(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, 3);
    radar.HydrometeorClassification(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    out.data(), 3);
    EXPECT_EQ(out, std::vector<float>(3, -1.0f));
}

}  // namespace
