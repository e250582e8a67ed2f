#include "fuzzy/engine.h"

#include <algorithm>

#include "base/kernel.h"
#include "base/message.h"
#include "fuzzy/quick_verdict.h"

namespace clutter::fuzzy {
namespace {

constexpr int kBlock = 256;

CLUTTER_KERNEL void multiply(const double* __restrict degrees, double* __restrict strength, int n) {
    for (int j = 0; j < n; ++j) strength[j] = strength[j] * degrees[j];
}

CLUTTER_KERNEL void addWeighted(const double* __restrict degrees, double weight,
                                double* __restrict strength, int n) {
    for (int j = 0; j < n; ++j) strength[j] = strength[j] + weight * degrees[j];
}

struct Ranking {
    double best[kBlock];
    float winner[kBlock];
    int differ[kBlock];
};

/* Rule 0 opens the ranking. A NaN strength is never exceeded, but it differs from every other. */
void rankFirst(const double* strength, float code, int n, Ranking& ranking) {
    for (int j = 0; j < n; ++j) {
        ranking.best[j] = strength[j];
        ranking.winner[j] = code;
        ranking.differ[j] = strength[j] == strength[j] ? 0 : 1;
    }
}

CLUTTER_KERNEL void rankNext(const double* strength, float code, int n, Ranking& ranking) {
    for (int j = 0; j < n; ++j) {
        const bool stronger = strength[j] > ranking.best[j];
        ranking.differ[j] |= strength[j] == ranking.best[j] ? 0 : 1;
        ranking.best[j] = stronger ? strength[j] : ranking.best[j];
        ranking.winner[j] = stronger ? code : ranking.winner[j];
    }
}

}  // namespace

/* Elements that the quick verdict leaves open, gathered until a block is full. */
class OpenElements {
  public:
    OpenElements(const float* const* inputs, int ninputs)
        : source_(inputs), inputs_(static_cast<std::size_t>(ninputs)) {}

    void add(int element) {
        if (gathered_.empty()) makeRoom();
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            if (source_[i] != nullptr)
                gathered_[i * kCapacity + index(count_)] = source_[i][element];
        }
        elements_[count_++] = element;
    }

    int count() const { return count_; }
    int element(int at) const { return elements_[at]; }
    const float* const* inputs() const { return inputs_.data(); }
    void clear() { count_ = 0; }

  private:
    // Emptied whenever a block is full, and filled by a block at a time.
    static constexpr std::size_t kCapacity = std::size_t{2} * kBlock;
    static std::size_t index(int i) { return static_cast<std::size_t>(i); }

    void makeRoom() {
        gathered_.resize(inputs_.size() * kCapacity);
        for (std::size_t i = 0; i < inputs_.size(); ++i) {
            inputs_[i] = gathered_.data() + i * kCapacity;
        }
    }

    const float* const* source_;
    std::vector<float> gathered_;
    std::vector<const float*> inputs_;
    int elements_[kCapacity];
    int count_ = 0;
};

void evaluateTerm(const Term& term, const float* x, double* degrees, int n) {
    switch (term.shape) {
        case Shape::kSame:
            return evaluateSame(x, degrees, n);
        case Shape::kComplement:
            return evaluateComplement(x, degrees, n);
        case Shape::kGaussian:
            return evaluateGaussian(term.params.data(), x, degrees, n);
        case Shape::kGaussian2s:
            return evaluateGaussian2s(term.params.data(), x, degrees, n);
        case Shape::kOnes:
            return evaluateOnes(degrees, n);
        case Shape::kTrapezoidal:
            return evaluateTrapezoid(term.params.data(), x, degrees, n);
        case Shape::kTable:
            return term.table->evaluate(x, degrees, n);
    }
}

bool resolveTerm(const Cfuzzy& engine, int input, int mf, TableSet& tables, Term& term,
                 std::string& missing) {
    term = Term{};
    if (mf < 0 || engine.data[input] == nullptr) return true;
    const Cvars& variable = engine.inputs[input];
    if (mf >= variable.nmfs) {
        missing = std::string(variable.name) + "[" + std::to_string(mf) + "]";
        return false;
    }
    const Cmfs& function = variable.mfs[mf];
    term.shape = shapeOf(function.type);
    std::copy_n(function.params, 5, term.params.begin());
    if (term.shape != Shape::kTable) return true;
    std::unique_ptr<Table>& table = tables[{input, mf}];
    if (table == nullptr) {
        Points points;
        if (readMembershipFile(function.type, points) != ReadResult::kRead) {
            missing = function.type;
            return false;
        }
        table = std::make_unique<Table>(std::move(points));
    }
    term.table = table.get();
    return true;
}

RuleBase::RuleBase(const Cfuzzy& engine)
    : ninputs_(engine.ninputs),
      nrules_(engine.rules != nullptr ? engine.nrules : 0),
      product_(engine.combination == 1),
      weights_(engine.weights, engine.weights + engine.ninputs) {
    const int columns = engine.ninputs + engine.noutputs;
    for (int k = 0; engine.rules != nullptr && k < nrules_; ++k) {
        const short* row = engine.rules + static_cast<std::ptrdiff_t>(k) * columns;
        classes_.push_back(engine.noutputs > 0 ? static_cast<float>(row[ninputs_]) : 0.0f);
        for (int i = 0; i < ninputs_; ++i) {
            Term& term = terms_.emplace_back();
            if (!resolveTerm(engine, i, row[i], tables_, term, missing_)) {
                complete_ = false;
                return;
            }
            remembersDegrees_ = remembersDegrees_ || term.shape == Shape::kTrapezoidal;
        }
    }
}

RuleBase::~RuleBase() = default;

bool RuleBase::announceComplete() const {
    if (!complete_) base::report("Membership function not found: %s!\n", missing_.c_str());
    return complete_;
}

void RuleBase::prepareForMany() {
    quick_ = QuickVerdict::make(*this);
}

void RuleBase::classify(const float* const* inputs, int n, float* out) const {
    if (nrules_ == 0) {
        std::fill_n(out, n, -1.0f);
    } else if (quick_) {
        classifyQuickly(inputs, n, out);
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
    for (int k = 0; k < nrules_; ++k) {
        evaluateRule(k, inputs, start, n, degrees, strength);
        if (k == 0) {
            rankFirst(strength, classes_[0], n, ranking);
        } else {
            rankNext(strength, classes_[static_cast<std::size_t>(k)], n, ranking);
        }
    }
    for (int j = 0; j < n; ++j) out[j] = ranking.differ[j] != 0 ? ranking.winner[j] : -1.0f;
}

void RuleBase::evaluateRule(int rule, const float* const* inputs, int start, int n, double* degrees,
                            double* strength) const {
    std::fill_n(strength, n, 1.0);
    for (int i = 0; i < ninputs_; ++i) {
        const Term& picked = term(rule, i);
        // A factor of 1 changes nothing, unless a trapezoid reads the degrees that it leaves.
        if (picked.shape == Shape::kOnes && product_ && !remembersDegrees_) continue;
        const float* x = picked.shape == Shape::kOnes ? nullptr : inputs[i] + start;
        evaluateTerm(picked, x, degrees, n);
        if (product_) {
            multiply(degrees, strength, n);
        } else {
            addWeighted(degrees, weights_[static_cast<std::size_t>(i)], strength, n);
        }
    }
}

void RuleBase::classifyQuickly(const float* const* inputs, int n, float* out) const {
    float scores[kBlock];
    OpenElements open(inputs, ninputs_);
    for (int start = 0; start < n; start += kBlock) {
        const int count = std::min(kBlock, n - start);
        quick_->score(inputs, start, count, scores);
        // Gathered before out is written: it may be one of the inputs.
        for (int j = 0; j < count; ++j) {
            if (scores[j] == 0.0f) open.add(start + j);
        }
        for (int j = 0; j < count; ++j) {
            out[start + j] = scores[j] > 0.0f ? classes_[0] : classes_[1];
        }
        if (open.count() >= kBlock || start + count == n) settle(open, out);
    }
}

void RuleBase::settle(OpenElements& open, float* out) const {
    float exact[kBlock];
    for (int start = 0; start < open.count(); start += kBlock) {
        const int count = std::min(kBlock, open.count() - start);
        classifyBlock(open.inputs(), start, count, exact);
        for (int m = 0; m < count; ++m) out[open.element(start + m)] = exact[m];
    }
    open.clear();
}

}  // namespace clutter::fuzzy
