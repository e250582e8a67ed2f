/*
 * A rule base over arrays, in blocks that fit the cache. Elements that the quick verdict decides
 * are not evaluated; the others are gathered, so that they fill blocks too.
 */
#include "fuzzy/engine/engine.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/kernel.h"
#include "base/message.h"
#include "fuzzy/engine/quick_verdict.h"
#include "fuzzy/engine/ranking.h"

namespace clutter::fuzzy {
namespace {

constexpr int kBlock = UndecidedElements::kBlock;
static_assert(kBlock <= QuickVerdict::kMaxElements && kBlock <= Ranking::kMaxElements,
              "a block is scored and ranked at once");

CLUTTER_KERNEL void multiply(const double* __restrict degrees, double* __restrict strength, int n) {
    for (int j = 0; j < n; ++j) {
        strength[j] = strength[j] * degrees[j];
    }
}

CLUTTER_KERNEL void addWeighted(const double* __restrict degrees, double weight,
                                double* __restrict strength, int n) {
    for (int j = 0; j < n; ++j) {
        strength[j] = strength[j] + weight * degrees[j];
    }
}

}  // namespace

UndecidedElements::UndecidedElements(int ninputs)
    : gathered_(static_cast<std::size_t>(ninputs) * kCapacity),
      source_(static_cast<std::size_t>(ninputs)),
      inputs_(static_cast<std::size_t>(ninputs)) {
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        inputs_[i] = gathered_.data() + i * kCapacity;
    }
}

void UndecidedElements::begin(const float* const* inputs) {
    std::copy_n(inputs, source_.size(), source_.begin());
    count_ = 0;
}

void UndecidedElements::add(int element) {
    const auto at = static_cast<std::size_t>(count_);
    for (std::size_t i = 0; i < source_.size(); ++i) {
        if (source_[i] != nullptr) {
            gathered_[i * kCapacity + at] = source_[i][element];
        }
    }
    elements_[at] = element;
    ++count_;
}

RuleBase::RuleBase(const Cfuzzy& engine) {
    rules_.ninputs = engine.ninputs;
    rules_.product = engine.combination == 1;
    rules_.weights.assign(engine.weights, engine.weights + engine.ninputs);
    const int columns = engine.ninputs + engine.noutputs;
    for (int k = 0; engine.rules != nullptr && k < engine.nrules; ++k) {
        const short* row = engine.rules + static_cast<std::ptrdiff_t>(k) * columns;
        rules_.classes.push_back(engine.noutputs > 0 ? static_cast<float>(row[rules_.ninputs])
                                                     : 0.0f);
        for (int i = 0; i < rules_.ninputs; ++i) {
            Term& term = rules_.terms.emplace_back();
            if (!resolveTerm(engine, i, row[i], tables_, term, missing_)) {
                complete_ = false;
                return;
            }
            remembersDegrees_ = remembersDegrees_ || term.shape == Shape::kTrapezoidal;
        }
    }
}

RuleBase::RuleBase(Rules rules, std::unique_ptr<const QuickVerdict> quick)
    : rules_(std::move(rules)), quick_(std::move(quick)) {
    remembersDegrees_ = std::any_of(rules_.terms.begin(), rules_.terms.end(), [](const Term& term) {
        return term.shape == Shape::kTrapezoidal;
    });
}

RuleBase::RuleBase(RuleBase&&) noexcept = default;
RuleBase::~RuleBase() = default;

bool RuleBase::announceComplete() const {
    if (!complete_) {
        base::report("Membership function not found: %s!\n", missing_.c_str());
    }
    return complete_;
}

void RuleBase::prepareForMany() {
    quick_ = QuickVerdict::make(rules_);
}

void RuleBase::classify(const float* const* inputs, int n, float* out,
                        UndecidedElements& undecided) const {
    if (rules_.count() == 0) {
        std::fill_n(out, n, -1.0f);
    } else if (quick_) {
        classifyQuickly(inputs, n, out, undecided);
    } else {
        for (int start = 0; start < n; start += kBlock) {
            classifyBlock(inputs, start, std::min(kBlock, n - start), out + start);
        }
    }
}

void RuleBase::classifyBlock(const float* const* inputs, int start, int n, float* out) const {
    double degrees[kBlock];
    double strength[kBlock];
    Ranking ranking;
    std::fill_n(degrees, n, 1.0);
    for (int k = 0; k < rules_.count(); ++k) {
        evaluateRule(k, inputs, start, n, degrees, strength);
        const float code = rules_.classes[static_cast<std::size_t>(k)];
        if (k == 0) {
            ranking.begin(strength, code, n);
        } else {
            ranking.add(strength, code, n);
        }
    }
    ranking.winners(out, n);
}

void RuleBase::evaluateRule(int rule, const float* const* inputs, int start, int n, double* degrees,
                            double* strength) const {
    std::fill_n(strength, n, 1.0);
    for (int i = 0; i < rules_.ninputs; ++i) {
        const Term& picked = rules_.term(rule, i);
        // A factor of 1 changes nothing, unless a trapezoid reads the degrees that it leaves.
        if (picked.shape == Shape::kOnes && rules_.product && !remembersDegrees_) {
            continue;
        }
        const float* x = picked.shape == Shape::kOnes ? nullptr : inputs[i] + start;
        evaluateTerm(picked, x, degrees, n);
        if (rules_.product) {
            multiply(degrees, strength, n);
        } else {
            addWeighted(degrees, rules_.weights[static_cast<std::size_t>(i)], strength, n);
        }
    }
}

void RuleBase::classifyQuickly(const float* const* inputs, int n, float* out,
                               UndecidedElements& undecided) const {
    float scores[kBlock];
    undecided.begin(inputs);
    for (int start = 0; start < n; start += kBlock) {
        const int count = std::min(kBlock, n - start);
        quick_->score(inputs, start, count, scores);
        // Gathered before out is written: it may be one of the inputs.
        for (int j = 0; j < count; ++j) {
            if (scores[j] == 0.0f) {
                undecided.add(start + j);
            }
        }
        for (int j = 0; j < count; ++j) {
            out[start + j] = scores[j] > 0.0f ? rules_.classes[0] : rules_.classes[1];
        }
        if (undecided.count() >= kBlock || start + count == n) {
            decide(undecided, out);
        }
    }
}

void RuleBase::decide(UndecidedElements& undecided, float* out) const {
    float exact[kBlock];
    for (int start = 0; start < undecided.count(); start += kBlock) {
        const int count = std::min(kBlock, undecided.count() - start);
        classifyBlock(undecided.inputs(), start, count, exact);
        for (int m = 0; m < count; ++m) {
            out[undecided.element(start + m)] = exact[m];
        }
    }
    undecided.clear();
}

}  // namespace clutter::fuzzy
