/* The engine against the literal definition, by hand at its edges, and its membership files. */
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cfuzzy.h"
#include "support/engines.h"
#include "support/literal/classification.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::fillEngine;
using clutter::test::roughValues;
using clutter::test::writeText;
using literal::Function;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

Function roughFunction(std::mt19937& random, bool tablesOnly) {
    const char* shapes[] = {"same", "complement", "gaussian", "gaussian2s", "ones", "trapezoidal"};
    if (tablesOnly || random() % 2 == 0) {
        return clutter::test::roughTable(random, 20.0, random() % 5 != 0);
    }
    Function function;
    function.shape = shapes[random() % 6];
    for (float& p : function.params) {
        p = static_cast<float>(random() % 20);
    }
    return function;
}

literal::RuleBase roughBase(std::mt19937& random, int ninputs, int nrules, bool tablesOnly) {
    literal::RuleBase base;
    base.product = tablesOnly || random() % 3 != 0;
    for (int i = 0; i < ninputs; ++i) {
        std::vector<Function> functions;
        for (int k = 0; k < nrules; ++k) {
            functions.push_back(roughFunction(random, tablesOnly));
        }
        base.functions.push_back(functions);
        base.weights.push_back(static_cast<double>(random() % 100) / 10.0);
    }
    for (int k = 0; k < nrules; ++k) {
        std::vector<int> rule;
        for (int i = 0; i < ninputs; ++i) {
            rule.push_back(random() % 6 == 0 ? -1 : k);
        }
        base.rules.push_back(rule);
        base.classes.push_back(static_cast<float>(10 + k));
    }
    return base;
}

/* Small arrays take the plain path, large two-rule products the quick one. */
class EngineAgainstLiteral : public testing::TestWithParam<int> {};

TEST_P(EngineAgainstLiteral, SameClasses) {
    const int n = GetParam();
    std::mt19937 random(static_cast<unsigned>(n));
    clutter::test::TempDir directory;
    for (int round = 0; round < (n > 1000 ? 25 : 150); ++round) {
        const int ninputs = 1 + static_cast<int>(random() % 5);
        const int nrules = round % 2 == 0 ? 2 : 1 + static_cast<int>(random() % 4);
        const literal::RuleBase base = roughBase(random, ninputs, nrules, round % 3 == 0);
        Cfuzzy engine(ninputs, nrules, 1, nrules);
        fillEngine(engine, base, directory);
        std::vector<std::vector<float>> values;
        std::vector<const float*> inputs;
        for (int i = 0; i < ninputs; ++i) {
            values.push_back(roughValues(random, n));
        }
        for (int i = 0; i < ninputs; ++i) {
            engine.AddressDataPointers(i, values[static_cast<std::size_t>(i)].data());
            inputs.push_back(values[static_cast<std::size_t>(i)].data());
        }
        std::vector<float> expected(static_cast<std::size_t>(n)), out(expected.size(), 99.0f);
        literal::classify(base, inputs, expected.data(), n);
        ASSERT_EQ(engine.Evaluate(out.data(), n), 1);
        ASSERT_EQ(out, expected) << "round " << round;
        ASSERT_EQ(engine.Evaluate(values[0].data(), n), 1) << "in place";
        ASSERT_EQ(values[0], expected) << "round " << round << ", in place";
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, EngineAgainstLiteral, testing::Values(1, 255, 700, 5000));

struct TwoValues {
    float x[2] = {0.5f, 0.25f};
    float out[2] = {99.0f, 99.0f};
};

/* Function 0 is 1 - x, 1 and 2 are 1, 3 is x, of one input; rows of function and class. */
TEST(Engine, TheStrongestRuleWinsTheEarliestOfEqualsAndNoneWhereAllAreEqual) {
    struct Row {
        const char* name;
        float x;
        std::vector<short> rules;
        float expected;
    };
    const Row rows[] = {
        {"the earliest of equally strong ones", 0.5f, {0, 10, 1, 11, 2, 12}, 11.0f},
        {"unused inputs", 0.5f, {-1, 10, -1, 11}, -1.0f},
        {"a single rule decides nothing", 0.25f, {0, 10}, -1.0f},
        {"no rules", 0.5f, {}, -1.0f},
        {"NaN in rule 0 is never exceeded", kNan, {3, 10, 1, 11}, 10.0f},
        {"NaN in another rule never wins", kNan, {1, 10, 3, 11}, 10.0f},
        {"the stronger of two", 0.25f, {3, 10, 1, 11}, 11.0f},
    };
    for (const Row& row : rows) {
        float x[1] = {row.x}, out[1] = {99.0f};
        std::vector<short> table = row.rules;
        Cfuzzy engine(1, 4, 1, 4);
        const char* const types[] = {"complement", "ones", "ones", "same"};
        for (int f = 0; f < 4; ++f) {
            engine.Fillmfs(0, f, "input", "f", types[f], nullptr);
        }
        engine.AddressDataPointers(0, x);
        engine.Fillrules(table.data(), static_cast<int>(table.size() / 2));
        ASSERT_EQ(engine.Evaluate(out, 1), 1);
        EXPECT_EQ(out[0], row.expected) << row.name;
    }
}

TEST(Engine, TrapezoidPlateauKeepsTheDegreeBefore) {
    // Rule 0: a plateau at the very start keeps 1. Rule 1: 0.5 from the first input, an absent
    // second one leaves 1, which the plateau of the third keeps.
    TwoValues v;
    Cfuzzy engine(3, 2, 1, 2);
    float plateau[5] = {-1, 0, 1, 2, 0};
    engine.Fillmfs(0, 0, "input", "plateau", "trapezoidal", plateau);
    engine.Fillmfs(0, 1, "input", "itself", "same", nullptr);
    engine.Fillmfs(2, 1, "input", "plateau", "trapezoidal", plateau);
    for (int i = 0; i < 3; ++i) {
        engine.AddressDataPointers(i, v.x);
    }
    short table[] = {0, -1, -1, 10, 1, -1, 1, 11};
    engine.Fillrules(table, 2);
    engine.combination = 0;
    // Sums: rule 0: 1 + 1 + 1 + 1; rule 1: 1 + 0.5 + 1 + 1, which weight 1.5 of the plateau makes
    // equal.
    engine.weights[2] = 1.0;
    ASSERT_EQ(engine.Evaluate(v.out, 1), 1);
    EXPECT_EQ(v.out[0], 10.0f);

    // Products: 0.25 of the first input, the absent one's 1, and so 1 on the plateau; against 0.2.
    float other[1] = {0.2f};
    Cfuzzy product(4, 2, 1, 2);
    product.Fillmfs(0, 0, "input", "itself", "same", nullptr);
    product.Fillmfs(2, 0, "input", "plateau", "trapezoidal", plateau);
    product.Fillmfs(3, 0, "input", "itself", "same", nullptr);
    v.x[0] = 0.25f;
    for (int i = 0; i < 3; ++i) {
        product.AddressDataPointers(i, v.x);
    }
    product.AddressDataPointers(3, other);
    short rules[] = {0, -1, 0, -1, 10, -1, -1, -1, 0, 11};
    product.Fillrules(rules, 2);
    ASSERT_EQ(product.Evaluate(v.out, 1), 1);
    EXPECT_EQ(v.out[0], 10.0f);
}

TEST(Engine, WeightedSumStartsAtOne) {
    // Rule 0: 1 + 2 * 0.5 + 1 * 0.5 = 2.5; rule 1: an absent input counts as degree 1, so 1 + 2 + 1
    // = 4.
    TwoValues v;
    Cfuzzy engine(2, 2, 1, 2);
    for (int i = 0; i < 2; ++i) {
        engine.Fillmfs(i, 0, "input", "itself", "same", nullptr);
        engine.AddressDataPointers(i, v.x);
    }
    engine.combination = 2;
    engine.weights[0] = 2.0;
    short table[] = {0, 0, 10, -1, -1, 11};
    engine.Fillrules(table, 2);
    ASSERT_EQ(engine.Evaluate(v.out, 1), 1);
    EXPECT_EQ(v.out[0], 11.0f);
    // Against a rule of strength 2.5 as well, nothing is decided: the offset is the same.
    short same[] = {0, 0, 10, 0, 0, 11};
    engine.Fillrules(same, 2);
    ASSERT_EQ(engine.Evaluate(v.out, 1), 1);
    EXPECT_EQ(v.out[0], -1.0f);
}

TEST(Engine, MissingFunctionsAreNamedOnceAndNothingIsWritten) {
    clutter::test::TempDir directory;
    TwoValues v;
    Cfuzzy engine(2, 1, 1, 1);
    const std::string good = directory.file("good"), empty = directory.file("empty");
    writeText(good, "0 1 10 0");
    writeText(empty, " \n 5 ");
    engine.Fillmfs(0, 0, "input", "f", good.c_str(), nullptr);
    engine.Fillmfs(1, 0, "input", "f", "none", nullptr);
    for (int i = 0; i < 2; ++i) {
        engine.AddressDataPointers(i, v.x);
    }
    short table[] = {0, 0, 10, 0, 0, 11};
    engine.Fillrules(table, 2);
    const std::string types[] = {"none", empty, std::string(2000, 'p')};
    for (const std::string& type : types) {
        engine.Fillmfs(1, 0, "input", "f", type.c_str(), nullptr);
        testing::internal::CaptureStdout();
        EXPECT_EQ(engine.Evaluate(v.out, 2), 0);
        const std::string named = type.size() < 1024 ? type : "/dev/null/path-too-long";
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  "Membership function not found: " + named + "!\n");
        EXPECT_EQ(v.out[0], 99.0f);
    }
    short beyond[] = {0, 1, 10, 0, 0, 11};
    engine.Fillrules(beyond, 2);
    testing::internal::CaptureStdout();
    EXPECT_EQ(engine.Evaluate(v.out, 2), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout().rfind("Membership function not found: ", 0),
              0u);
    EXPECT_EQ(engine.Evaluate(nullptr, 2), 0);
}

TEST(Engine, FillOperationsRejectWhatDoesNotExist) {
    Cfuzzy engine(2, 3, 1, 2);
    float params[5] = {1, 2, 3, 4, 5};
    EXPECT_EQ(engine.FillVars(1, "input", "x", 0, 1), 1);
    EXPECT_EQ(engine.FillVars(2, "input", "x", 0, 1), -1);
    EXPECT_EQ(engine.FillVars(-1, "input", "x", 0, 1), -1);
    EXPECT_EQ(engine.FillVars(1, "output", "x", 0, 1), -1);
    EXPECT_EQ(engine.FillVars(0, "Input", "x", 0, 1), -2);
    EXPECT_EQ(engine.Fillmfs(9, 9, "Input", "x", "same", params), -2) << "the kind is tested first";
    EXPECT_EQ(engine.Fillmfs(9, 9, "input", "x", "same", params), -1);
    EXPECT_EQ(engine.Fillmfs(1, 3, "input", "x", "same", params), -3);
    EXPECT_EQ(engine.Fillmfs(1, -1, "input", "x", "same", params), -3);
    EXPECT_EQ(engine.Fillmfs(1, 2, "input", std::string(50, 'n').c_str(), "same", params), 1);
    EXPECT_STREQ(engine.inputs[1].mfs[2].name, std::string(19, 'n').c_str());
    EXPECT_EQ(engine.inputs[1].mfs[2].params[4], 5.0f);
    EXPECT_EQ(engine.AddressDataPointers(2, params), -1);
    EXPECT_EQ(engine.AddressDataPointers(-1, params), -1);
}

TEST(Engine, DegreesOfOneFunction) {
    TwoValues v;
    double degrees[2] = {7.0, 7.0};
    Cfuzzy engine(1, 1, 1, 1);
    engine.Fillmfs(0, 0, "input", "f", "complement", nullptr);
    EXPECT_EQ(engine.Evalmfs(0, -1, degrees, 2), 1) << "no data are read";
    EXPECT_EQ(degrees[1], 1.0);
    engine.AddressDataPointers(0, v.x);
    EXPECT_EQ(engine.Evalmfs(0, 0, degrees, 2), 1);
    EXPECT_EQ(degrees[1], 0.75);
    EXPECT_EQ(engine.Evalmfs(0, 1, degrees, 2), 0);
    EXPECT_EQ(engine.Evalmfs(1, 0, degrees, 2), 0);
    engine.Fillmfs(0, 0, "input", "f", "/nowhere/to/be/found", nullptr);
    EXPECT_EQ(engine.Evalmfs(0, 0, degrees, 2), 0);
}

TEST(MembershipFile, PairsOfTokens) {
    clutter::test::TempDir directory;
    const std::string path = directory.file("mf");
    Cfuzzy engine(1, 1, 1, 1);
    double *x = nullptr, *y = nullptr;
    int n = -7;
    std::string name = path;
    EXPECT_EQ(engine.readmf(name.data(), &x, &y, n), -1);
    for (const char* text : {"", "  \r\n", "12"}) {
        writeText(path, text);
        EXPECT_EQ(engine.readmf(name.data(), &x, &y, n), -2) << text;
    }
    EXPECT_EQ(n, -7);
    EXPECT_EQ(x, nullptr);
    writeText(path, "0 0\r\n10\t" + std::string(5000, '0') + "1 20");
    ASSERT_EQ(engine.readmf(name.data(), &x, &y, n), 1);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(x[1], 10.0);
    EXPECT_EQ(y[1], 1.0);
    delete[] x;
    delete[] y;
    writeText(path, "low 0.25 7,5 1e-3x");
    ASSERT_EQ(engine.readmf(name.data(), &x, &y, n), 1);
    EXPECT_EQ(x[0], 0.0) << "not a number";
    EXPECT_EQ(x[1], 7.0);
    EXPECT_EQ(y[1], 1e-3);
    delete[] x;
    delete[] y;
}

}  // namespace
