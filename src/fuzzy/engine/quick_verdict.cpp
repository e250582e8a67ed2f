/*
 * The sum of the inputs' cells, compared with the uncertainty of the cells and of rounding.
 */
#include "fuzzy/engine/quick_verdict.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/kernel.h"

namespace clutter::fuzzy {
namespace {

constexpr std::size_t kMaxInputs = 10;
constexpr float kRounding = 1e-3f;  // far above the rounding of such sums and products

CLUTTER_KERNEL void dropUncertain(float tolerance, float* scores, int n) {
    for (int j = 0; j < n; ++j) {
        const bool certain = scores[j] > tolerance || scores[j] < -tolerance;
        scores[j] = certain ? scores[j] : 0.0f;
    }
}

}  // namespace

std::unique_ptr<const QuickVerdict> QuickVerdict::make(const Rules& rules) {
    if (!rules.product || rules.count() != 2) {
        return nullptr;
    }
    std::vector<InputCells> inputs;
    for (int i = 0; i < rules.ninputs; ++i) {
        const Term& rule0 = rules.term(0, i);
        const Term& rule1 = rules.term(1, i);
        if (rule0.shape == Shape::kOnes && rule1.shape == Shape::kOnes) {
            continue;
        }
        inputs.push_back({i, RatioCells::make(rule0, rule1)});
        if (inputs.back().cells == nullptr) {
            return nullptr;
        }
    }
    return make(std::move(inputs));
}

std::unique_ptr<const QuickVerdict> QuickVerdict::make(std::vector<InputCells> inputs) {
    // With more inputs both products may vanish or overflow, and comparing them decides nothing.
    if (inputs.empty() || inputs.size() > kMaxInputs) {
        return nullptr;
    }
    std::unique_ptr<QuickVerdict> quick(new QuickVerdict);
    quick->tolerance_ = kRounding;
    for (const InputCells& input : inputs) {
        if (input.cells == nullptr) {
            return nullptr;
        }
        quick->tolerance_ += input.cells->widestHalf();
    }
    quick->inputs_ = std::move(inputs);
    return quick;
}

void QuickVerdict::score(const float* const* inputs, int start, int n, float* scores) const {
    std::fill_n(scores, n, 0.0f);
    for (const InputCells& input : inputs_) {
        input.cells->add(inputs[input.input] + start, scores, n);
    }
    dropUncertain(tolerance_, scores, n);
}

}  // namespace clutter::fuzzy
