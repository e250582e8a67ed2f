/* engines.h - engines filled from literal rule bases, and values to ask them about. */
#ifndef TESTS_SUPPORT_ENGINES_H
#define TESTS_SUPPORT_ENGINES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cfuzzy.h"
#include "support/literal/classification.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace clutter::test {

/* Fills an engine with a literal rule base; tables become files. */
inline void fillEngine(Cfuzzy& engine, const literal::RuleBase& base, const TempDir& directory) {
    for (std::size_t i = 0; i < base.functions.size(); ++i) {
        for (std::size_t m = 0; m < base.functions[i].size(); ++m) {
            const literal::Function& function = base.functions[i][m];
            std::string type = function.shape;
            if (!function.px.empty()) {
                type = directory.file(std::to_string(i) + "_" + std::to_string(m));
                writeFunction(type, function);
            }
            float params[5];
            std::copy(std::begin(function.params), std::end(function.params), params);
            ASSERT_EQ(engine.Fillmfs(static_cast<int>(i), static_cast<int>(m), "input", "f",
                                     type.c_str(), params),
                      1);
        }
    }
    std::vector<short> table;
    for (std::size_t k = 0; k < base.rules.size(); ++k) {
        for (const int mf : base.rules[k]) {
            table.push_back(static_cast<short>(mf));
        }
        table.push_back(static_cast<short>(base.classes[k]));
    }
    engine.Fillrules(table.data(), static_cast<int>(base.rules.size()));
    engine.combination = base.product ? 1 : 0;
    for (std::size_t i = 0; i < base.weights.size(); ++i) {
        engine.weights[i] = base.weights[i];
    }
}

inline std::vector<float> roughValues(std::mt19937& random, int n) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    std::uniform_real_distribution<float> uniform(-5.0f, 25.0f);
    std::vector<float> x;
    for (int j = 0; j < n; ++j) {
        x.push_back(random() % 30 == 0   ? kNan
                    : random() % 30 == 0 ? static_cast<float>(random() % 2)
                                         : uniform(random));
    }
    return x;
}

}  // namespace clutter::test

#endif
