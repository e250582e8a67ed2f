/*
 * Which way a scan takes: classes alone come from the quick verdicts that the entry point uses;
 * everything else from the evidence.
 */
#include "classifier/output.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "base/kernel.h"
#include "classifier/classification.h"
#include "classifier/evidence/log_ratio.h"
#include "driver/scan_classifier.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void codesOf(const float* __restrict classes, std::uint8_t* __restrict codes,
                            int n) {
    for (int g = 0; g < n; ++g) {
        codes[g] = static_cast<std::uint8_t>(classes[g]);
    }
}

bool wantsContributions(const clutter_result& result) {
    return std::any_of(std::begin(result.contributions), std::end(result.contributions),
                       [](const float* array) { return array != nullptr; });
}

bool wantsClassesOnly(const clutter_result& result) {
    return result.margin == nullptr && result.probability == nullptr &&
           result.deciding == nullptr && !wantsContributions(result);
}

void classifyQuickly(const MembershipSet& set, const Request& request,
                     const clutter_result& result) {
    ScanRows rows(request);
    GateStates states(request, rows);
    driver::ScanInputs inputs(rows.fields(), request.inputs, states, request.shape,
                              request.texture);
    const fuzzy::RuleBase rules = set.rules(request.inputs, request.classes);
    driver::ScanClassifier classifier(inputs, rules);
    std::vector<float> classes(static_cast<std::size_t>(request.gates));
    for (int r = 0; r < request.rays; ++r) {
        classifier.classifyRay(r, classes.data());
        codesOf(classes.data(), result.classes + r * result.stride, request.gates);
    }
}

/* Copies a row to an array that may not be asked for. */
template <class T>
void writeRow(const T* row, T* array, std::ptrdiff_t at, int n) {
    if (array != nullptr) {
        std::copy_n(row, n, array + at);
    }
}

/* Contributions of one ray: those of the strongest kind of clutter; 0 for inputs not in use. */
void writeContributions(const EvidenceRow& evidence, const Decision& decision,
                        const std::uint8_t* states, const clutter_result& result,
                        std::ptrdiff_t at) {
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        float* const array = result.contributions[i];
        if (array == nullptr) {
            continue;
        }
        for (std::size_t g = 0; g < decision.classes.size(); ++g) {
            const std::vector<float>& shares = evidence.shares[decision.kind[g]][i];
            const float share = shares.empty() ? 0.0f : shares[g];
            array[at + static_cast<std::ptrdiff_t>(g)] =
                states[g] == kEcho ? share : std::numeric_limits<float>::quiet_NaN();
        }
    }
}

}  // namespace

void classifyInto(const MembershipSet& set, const Request& request, const clutter_result& result) {
    const bool plain =
        request.classes == 2 && !request.usesNeighbourhood() && !request.nanIsNotMeasured;
    if (plain && wantsClassesOnly(result)) {
        classifyQuickly(set, request, result);
        return;
    }
    const bool shares = result.deciding != nullptr || wantsContributions(result);
    Classification classification(set, request, shares);
    std::vector<std::uint8_t> deciding(shares ? static_cast<std::size_t>(request.gates) : 0);
    const int n = request.gates;
    for (int r = 0; r < request.rays; ++r) {
        const Decision& decision = classification.decideRay(r);
        const std::ptrdiff_t at = r * result.stride;
        writeRow(decision.classes.data(), result.classes, at, n);
        writeRow(decision.margin.data(), result.margin, at, n);
        if (result.probability != nullptr) {
            probabilities(decision.margin.data(), result.probability + at, n);
        }
        if (!shares) {
            continue;
        }
        const std::uint8_t* states = classification.states(r);
        findDeciding(classification.evidence(), classification.neighbourhoodShare(), states,
                     decision, deciding.data());
        writeRow(deciding.data(), result.deciding, at, n);
        writeContributions(classification.evidence(), decision, states, result, at);
    }
}

}  // namespace clutter::classifier
