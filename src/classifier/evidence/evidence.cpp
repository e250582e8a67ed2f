/*
 * Strengths of the classes as the engine computes them, product by product in input order, and
 * their log ratios.
 */
#include "classifier/evidence/evidence.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/kernel.h"
#include "classifier/evidence/log_ratio.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void multiplyDegrees(const double* __restrict degrees, double* __restrict strengths,
                                    int n) {
    for (int j = 0; j < n; ++j) {
        strengths[j] = strengths[j] * degrees[j];
    }
}

/* Smaller margins are computed as the engine computes them, so that their sign is its verdict.
 * Larger ones are so far from 0 that the error of quick products is negligible. */
constexpr float kClose = 1e-4f;
static_assert(2 * fuzzy::kInputCount * StrengthRows::kMaxError <
              1e-5 * static_cast<double>(kClose));

/* A NaN input has the degree 1 in every class. */
CLUTTER_KERNEL void leaveOutNan(const float* __restrict x, double* __restrict degrees, int n) {
    for (int j = 0; j < n; ++j) {
        degrees[j] = x[j] == x[j] ? degrees[j] : 1.0;
    }
}

}  // namespace

Evidence::Evidence(const MembershipSet& set, const Request& request, driver::ScanInputs& inputs,
                   GateStates& states, Wanted wanted)
    : set_(set),
      request_(request),
      inputs_(inputs),
      states_(states),
      wanted_(wanted),
      quick_(request.classes == 2 && !wanted.shares) {
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((request.inputs & (1u << i)) != 0) {
            quick_ = quick_ && set.input(i).isQuick();
        }
    }
}

EvidenceRow Evidence::makeRow() const {
    const auto n = static_cast<std::size_t>(request_.gates);
    EvidenceRow row;
    for (int kind = 0; kind < kinds(); ++kind) {
        row.textures[kind].resize(n);
        if (wanted_.texturesApart) {
            row.others[kind].resize(n);
        }
        for (int i = 0; wanted_.shares && i < fuzzy::kInputCount; ++i) {
            if ((request_.inputs & (1u << i)) != 0) {
                row.shares[kind][i].resize(n);
            }
        }
    }
    if (!wanted_.texturesApart && kinds() > 1) {
        row.winners.resize(n);
    }
    return row;
}

void Evidence::compute(int ray, EvidenceRow& row) {
    inputs_.moveTo(ray);
    const float* noise = states_.row(ray);
    for (auto run = driver::nextRun(noise, request_.gates, 0); run.start < request_.gates;
         run = driver::nextRun(noise, request_.gates, run.end)) {
        for (int start = run.start; start < run.end; start += kBlock) {
            computeBlock(start, std::min(kBlock, run.end - start), row);
        }
    }
}

void Evidence::computeBlock(int start, int n, EvidenceRow& row) {
    const float* inputs[fuzzy::kInputCount] = {};
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((request_.inputs & (1u << i)) != 0) {
            inputs[i] = inputs_.row(i) + start;
        }
    }
    if (wanted_.texturesApart) {
        multiply({0, fuzzy::kTextureCount, inputs, n}, start, row);
        takeLogs(row.textures, start, n);
        multiply({fuzzy::kTextureCount, fuzzy::kInputCount, inputs, n}, start, row);
        takeLogs(row.others, start, n);
        return;
    }
    multiply({0, fuzzy::kInputCount, inputs, n}, start, row);
    takeLogs(row.textures, start, n);
    if (quick_) {
        decideCloseOnes(inputs, row.textures[0].data() + start, n);
    }
    if (kinds() == 1) {
        return;  // the sign of the log ratio says as much
    }
    ranking_.begin(strengths_[0], 0.0f, n);
    for (int c = 1; c < request_.classes; ++c) {
        ranking_.add(strengths_[c], static_cast<float>(c), n);
    }
    ranking_.winners(row.winners.data() + start, n);
}

void Evidence::multiply(const Slice& slice, int start, EvidenceRow& row) {
    if (quick_) {
        multiplyQuickly(slice);
        return;
    }
    for (int c = 0; c < request_.classes; ++c) {
        std::fill_n(strengths_[c], slice.n, 1.0);
    }
    for (int i = slice.first; i < slice.last; ++i) {
        const float* const x = slice.inputs[i];
        if (x == nullptr) {
            continue;
        }
        multiplyExactly(i, x, slice.n);
        if (wanted_.shares) {
            takeShares(i, start, slice.n, row);
        }
    }
}

void Evidence::multiplyQuickly(const Slice& slice) {
    std::fill_n(pairs_, slice.n, ClassPair{1.0, 1.0});
    for (int i = slice.first; i < slice.last; ++i) {
        if (slice.inputs[i] != nullptr) {
            set_.input(i).multiplyTwo(slice.inputs[i], request_.nanIsNotMeasured, pairs_, slice.n);
        }
    }
    for (int j = 0; j < slice.n; ++j) {
        strengths_[0][j] = pairs_[j][0];
        strengths_[kPrecipitationClass][j] = pairs_[j][1];
    }
}

void Evidence::multiplyExactly(int input, const float* x, int n) {
    double* degrees[kMaxClasses];
    for (int c = 0; c < request_.classes; ++c) {
        degrees[c] = degrees_[c];
    }
    set_.input(input).evaluate(x, n, request_.classes, degrees);
    for (int c = 0; c < request_.classes; ++c) {
        if (request_.nanIsNotMeasured) {
            leaveOutNan(x, degrees_[c], n);
        }
        multiplyDegrees(degrees_[c], strengths_[c], n);
    }
}

void Evidence::takeShares(int input, int start, int n, EvidenceRow& row) const {
    for (int kind = 0; kind < kinds(); ++kind) {
        logRatios(degrees_[kPrecipitationClass], degrees_[classOfKind(kind)],
                  row.shares[kind][input].data() + start, n);
    }
}

void Evidence::decideCloseOnes(const float* const* inputs, float* margins, int n) {
    int close[kBlock];
    int count = 0;
    for (int j = 0; j < n; ++j) {
        close[count] = j;
        count += std::fabs(margins[j]) < kClose ? 1 : 0;
    }
    if (count == 0) {
        return;
    }
    for (double(&strengths)[kBlock] : strengths_) {
        std::fill_n(strengths, count, 1.0);
    }
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (inputs[i] == nullptr) {
            continue;
        }
        for (int m = 0; m < count; ++m) {
            gathered_[m] = inputs[i][close[m]];
        }
        multiplyExactly(i, gathered_, count);
    }
    float exact[kBlock];
    logRatios(strengths_[kPrecipitationClass], strengths_[0], exact, count);
    for (int m = 0; m < count; ++m) {
        margins[close[m]] = exact[m];
    }
}

void Evidence::takeLogs(std::vector<float> (&rows)[kMaxKinds], int start, int n) const {
    for (int kind = 0; kind < kinds(); ++kind) {
        logRatios(strengths_[kPrecipitationClass], strengths_[classOfKind(kind)],
                  rows[kind].data() + start, n);
    }
}

}  // namespace clutter::classifier
