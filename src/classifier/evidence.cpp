/*
 * Strengths of the classes as the engine computes them, product by product in input order, and
 * their log ratios.
 */
#include "classifier/evidence.h"

#include <algorithm>
#include <cstddef>

#include "base/kernel.h"
#include "classifier/log_ratio.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void multiply(const double* __restrict degrees, double* __restrict strengths,
                             int n) {
    for (int j = 0; j < n; ++j) strengths[j] = strengths[j] * degrees[j];
}

/* A NaN input has the degree 1 in every class. */
CLUTTER_KERNEL void leaveOutNan(const float* __restrict x, double* __restrict degrees, int n) {
    for (int j = 0; j < n; ++j) degrees[j] = x[j] == x[j] ? degrees[j] : 1.0;
}

}  // namespace

Evidence::Evidence(const MembershipSet& set, const Request& request, driver::ScanInputs& inputs,
                   GateStates& states, Wanted wanted)
    : set_(set), request_(request), inputs_(inputs), states_(states), wanted_(wanted) {}

EvidenceRow Evidence::makeRow() const {
    const auto n = static_cast<std::size_t>(request_.gates);
    EvidenceRow row;
    for (int kind = 0; kind < kinds(); ++kind) {
        row.textures[kind].resize(n);
        if (wanted_.texturesApart) row.others[kind].resize(n);
        for (int i = 0; wanted_.shares && i < fuzzy::kInputCount; ++i) {
            if ((request_.inputs & (1u << i)) != 0) row.shares[kind][i].resize(n);
        }
    }
    if (!wanted_.texturesApart && kinds() > 1) row.winners.resize(n);
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
    if (wanted_.texturesApart) {
        multiplyInputs(0, fuzzy::kTextureCount, start, n, row);
        takeLogs(row.textures, start, n);
        multiplyInputs(fuzzy::kTextureCount, fuzzy::kInputCount, start, n, row);
        takeLogs(row.others, start, n);
        return;
    }
    multiplyInputs(0, fuzzy::kInputCount, start, n, row);
    takeLogs(row.textures, start, n);
    if (kinds() == 1) return;  // the sign of the log ratio says as much
    ranking_.begin(strengths_[0], 0.0f, n);
    for (int c = 1; c < request_.classes; ++c) {
        ranking_.add(strengths_[c], static_cast<float>(c), n);
    }
    ranking_.winners(row.winners.data() + start, n);
}

void Evidence::multiplyInputs(int first, int last, int start, int n, EvidenceRow& row) {
    double* degrees[kMaxClasses];
    for (int c = 0; c < request_.classes; ++c) {
        degrees[c] = degrees_[c];
        std::fill_n(strengths_[c], n, 1.0);
    }
    for (int i = first; i < last; ++i) {
        if ((request_.inputs & (1u << i)) == 0) continue;
        const float* x = inputs_.row(i) + start;
        set_.input(i).evaluate(x, n, request_.classes, degrees);
        for (int c = 0; c < request_.classes; ++c) {
            if (request_.nanIsNotMeasured) leaveOutNan(x, degrees_[c], n);
            multiply(degrees_[c], strengths_[c], n);
        }
        for (int kind = 0; wanted_.shares && kind < kinds(); ++kind) {
            logRatios(degrees_[kPrecipitationClass], degrees_[classOfKind(kind)],
                      row.shares[kind][i].data() + start, n);
        }
    }
}

void Evidence::takeLogs(std::vector<float> (&rows)[kMaxKinds], int start, int n) const {
    for (int kind = 0; kind < kinds(); ++kind) {
        logRatios(strengths_[kPrecipitationClass], strengths_[classOfKind(kind)],
                  rows[kind].data() + start, n);
    }
}

}  // namespace clutter::classifier
