/* The quick verdict of two-rule products decides as the exact evaluation does. */
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "support/engines.h"

namespace {

using namespace clutter::test;
using literal::Function;

TEST(QuickVerdict, SmoothPairsDecideAsTheExactProductDoes) {
    // The everyday case: overlapping bells with a floor, and a likelihood that is exactly 0 or 1 at
    // times.
    TempDir directory;
    std::mt19937 random(77);
    literal::RuleBase base;
    base.classes = {0.0f, 1.0f};
    base.rules = {{0, 0, 0}, {1, 1, 1}};
    for (int i = 0; i < 2; ++i) {
        Function low, high;
        for (double x = 0.0; x <= 32.0; x += 1.0) {
            low.px.push_back(x);
            high.px.push_back(x);
            low.py.push_back(0.01 + 1.0 / (1.0 + x * x / 16.0));
            high.py.push_back(0.02 + x / 33.0);
        }
        base.functions.push_back({high, low});
    }
    base.functions.push_back({Function{"same", {}, {}, {}}, Function{"complement", {}, {}, {}}});
    Cfuzzy engine(3, 2, 1, 2);
    fillEngine(engine, base, directory);
    const int n = 60000;
    std::vector<std::vector<float>> values = {roughValues(random, n), roughValues(random, n), {}};
    for (int j = 0; j < n; ++j) {
        values[2].push_back(j % 10 == 0 ? static_cast<float>(j % 20 / 10)
                                        : static_cast<float>(random() % 1000) / 999.0f);
    }
    std::vector<const float*> inputs;
    for (int i = 0; i < 3; ++i) {
        engine.AddressDataPointers(i, values[static_cast<std::size_t>(i)].data());
        inputs.push_back(values[static_cast<std::size_t>(i)].data());
    }
    std::vector<float> expected(n), out(n);
    literal::classify(base, inputs, expected.data(), n);
    ASSERT_EQ(engine.Evaluate(out.data(), n), 1);
    EXPECT_EQ(out, expected);
}

/* A two-rule product of tables over inputs; many elements, so that the quick verdict is asked
 * first. */
std::vector<float> classifyMany(const std::vector<std::vector<Function>>& functions,
                                std::vector<float> x, std::vector<float>& expected) {
    TempDir directory;
    literal::RuleBase base;
    base.functions = functions;
    base.classes = {0.0f, 1.0f};
    const std::size_t ninputs = functions.size();
    base.rules = {std::vector<int>(ninputs, 0), std::vector<int>(ninputs, 1)};
    const int n = static_cast<int>(x.size());
    Cfuzzy engine(static_cast<int>(ninputs), 2, 1, 2);
    fillEngine(engine, base, directory);
    for (std::size_t i = 0; i < ninputs; ++i) {
        engine.AddressDataPointers(static_cast<int>(i), x.data());
    }
    expected.assign(x.size(), 99.0f);
    literal::classify(base, std::vector<const float*>(ninputs, x.data()), expected.data(), n);
    std::vector<float> out(x.size());
    EXPECT_EQ(engine.Evaluate(out.data(), n), 1);
    return out;
}

Function tableOf(std::vector<double> x, std::vector<double> y) {
    return {"table", {}, std::move(x), std::move(y)};
}

TEST(QuickVerdict, ToothWithinOneCellIsSeen) {
    // Rises from 0.5 to 0.56 and falls back at once, all within a cell; elsewhere rule 1 is
    // stronger.
    const Function tooth = tableOf({0, 100.7, 100.9, 100.9, 2000}, {0.5, 0.5, 0.56, 0.5, 0.5});
    const Function flat = tableOf({0, 2000}, {0.55, 0.55});
    std::vector<float> x, expected;
    for (int j = 0; j < 20000; ++j) {
        x.push_back(99.0f + 0.0002f * static_cast<float>(j));
    }
    const std::vector<float> out = classifyMany({{tooth, flat}}, x, expected);
    EXPECT_EQ(out, expected);
    EXPECT_GT(std::count(expected.begin(), expected.end(), 0.0f), 100);
}

/* Degrees so small or large that the product of many leaves the range of a double. */
TEST(QuickVerdict, ProductsThatVanishOrOverflowAreEqual) {
    constexpr int kElements = 5000;
    struct Case {
        int ninputs;
        double degrees[2];
        float expected;
    };
    TempDir directory;
    std::vector<float> values(kElements, 0.5f), out(kElements);
    for (const Case& c : {Case{9, {1e-30, 2e-30}, 11.0f}, Case{10, {1e-30, 2e-30}, 11.0f},
                          Case{12, {1e-30, 2e-30}, -1.0f}, Case{12, {2e30, 1e30}, -1.0f},
                          Case{2, {1e-190, 1e-200}, -1.0f}}) {
        literal::RuleBase base;
        for (int i = 0; i < c.ninputs; ++i) {
            base.functions.emplace_back();
            for (const double degree : c.degrees) {
                base.functions.back().push_back({"", {}, {0.0, 1.0}, {degree, degree}});
            }
            base.weights.push_back(1.0);
        }
        for (int k = 0; k < 2; ++k) {
            base.rules.emplace_back(c.ninputs, k);
            base.classes.push_back(static_cast<float>(10 + k));
        }
        Cfuzzy engine(c.ninputs, 2, 1, 2);
        fillEngine(engine, base, directory);
        for (int i = 0; i < c.ninputs; ++i) {
            engine.AddressDataPointers(i, values.data());
        }
        ASSERT_EQ(engine.Evaluate(out.data(), kElements), 1);
        EXPECT_EQ(out, std::vector<float>(kElements, c.expected)) << c.ninputs << " inputs";
    }
}

}  // namespace
