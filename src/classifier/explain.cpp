/*
 * One gate's inputs, degrees and contributions, and for each input the nearest value that would
 * turn the verdict between precipitation and clutter.
 */
#include "classifier/explain.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "classifier/classification.h"
#include "classifier/evidence/log_ratio.h"
#include "classifier/turning_point.h"

namespace clutter::classifier {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

clutter_explanation emptyExplanation(std::uint8_t gateClass) {
    clutter_explanation explanation = {};
    explanation.size = sizeof explanation;
    explanation.gate_class = gateClass;
    explanation.deciding = CLUTTER_BY_NONE;
    explanation.turning = -1;
    explanation.margin = kNan;
    explanation.probability = kNan;
    for (clutter_input_share& share : explanation.input) {
        share = {kNan, kNan, kNan, kNan, kNan};
    }
    return explanation;
}

/* The input whose turning value is the smallest part of its usual range away. */
int nearestTurning(const clutter_explanation& explanation) {
    int nearest = -1;
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        const clutter_input_share& share = explanation.input[i];
        const double change = std::fabs(share.turning_value - share.value) /
                              (fuzzy::kInputs[i].high - fuzzy::kInputs[i].low);
        if (!(change < least)) {
            continue;
        }
        least = change;
        nearest = i;
    }
    return nearest;
}

/* One gate: the values of its inputs, their degrees in every class, and the margins. */
class Gate {
  public:
    Gate(const MembershipSet& set, const Request& request, Classification& classification, int ray,
         std::size_t at)
        : set_(set), request_(request), classification_(classification), at_(at) {
        classification.inputs().moveTo(ray);
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if (uses(i)) {
                readInput(i);
            }
        }
    }

    bool uses(int input) const { return (request_.inputs & (1u << input)) != 0; }

    clutter_input_share explain(int input, int kind, bool isPrecipitation) const {
        const Input& own = input_[static_cast<std::size_t>(input)];
        const double precipitation = own.degrees[kPrecipitationClass];
        const double clutter = own.degrees[static_cast<std::size_t>(classOfKind(kind))];
        TurningPoint turning(set_.input(input), own.value, isPrecipitation);
        for (int k = 0; k < request_.classes - 1; ++k) {
            turning.add(balance(input, k));
        }
        return {static_cast<double>(own.value), precipitation, clutter,
                logRatio(precipitation, clutter), turning.find()};
    }

  private:
    struct Input {
        float value;
        std::array<double, kMaxClasses> degrees;
    };

    void readInput(int i) {
        Input& input = input_[static_cast<std::size_t>(i)];
        input.value = classification_.inputs().row(i)[at_];
        const bool leftOut = request_.nanIsNotMeasured && std::isnan(input.value);
        for (int c = 0; c < request_.classes; ++c) {
            input.degrees[static_cast<std::size_t>(c)] =
                leftOut ? 1.0 : set_.input(i).degree(c, input.value);
        }
    }

    bool isAveraged(int input) const {
        return request_.usesNeighbourhood() && fuzzy::kInputs[input].texture;
    }

    /* An input that is averaged is multiplied to the others that are, and the same for the rest. */
    Balance balance(int input, int kind) const {
        Balance balance = {classOfKind(kind), 1.0, 1.0, kInfinity, 1.0, 0.0};
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if (i == input || !uses(i) || isAveraged(i) != isAveraged(input)) {
                continue;
            }
            const Input& other = input_[static_cast<std::size_t>(i)];
            balance.precipitation *= other.degrees[kPrecipitationClass];
            balance.clutter *= other.degrees[static_cast<std::size_t>(balance.clutterClass)];
        }
        if (request_.usesNeighbourhood()) {
            balance.rest = static_cast<double>(classification_.means(kind)[at_]);
        }
        if (isAveraged(input)) {
            addNeighbours(kind, balance);
        }
        return balance;
    }

    /* The gate's textures are one member of the mean, unless their evidence is NaN. */
    void addNeighbours(int kind, Balance& balance) const {
        const EvidenceRow& row = classification_.evidence();
        const auto own = static_cast<double>(row.textures[kind][at_]);
        const auto count = static_cast<double>(classification_.neighbourhood()->counts(kind)[at_]);
        balance.limit = static_cast<double>(kMaxEvidence);
        balance.weight = std::isnan(own) ? 0.0 : 1.0 / count;
        balance.rest += static_cast<double>(row.others[kind][at_]);
        balance.rest -= std::isnan(own) ? 0.0 : limitEvidence(own) / count;
    }

    const MembershipSet& set_;
    const Request& request_;
    Classification& classification_;
    std::size_t at_;
    std::array<Input, fuzzy::kInputCount> input_ = {};
};

}  // namespace

clutter_explanation explainGate(const MembershipSet& set, const Request& request, int ray,
                                int gate) {
    Classification classification(set, request, true);
    const Decision& decision = classification.decideRay(ray);
    const auto g = static_cast<std::size_t>(gate);
    clutter_explanation explanation = emptyExplanation(decision.classes[g]);
    const std::uint8_t* states = classification.states(ray);
    if (states[g] != kEcho) {
        return explanation;
    }

    std::vector<std::uint8_t> deciding(decision.classes.size());
    const float* const neighbourhood = classification.neighbourhoodShare();
    findDeciding(classification.evidence(), neighbourhood, states, decision, deciding.data());
    float probability = 0.0f;
    probabilities(&decision.margin[g], &probability, 1);
    explanation.inputs = request.inputs;
    explanation.deciding = deciding[g];
    explanation.margin = static_cast<double>(decision.margin[g]);
    explanation.probability = static_cast<double>(probability);
    if (neighbourhood != nullptr) {
        explanation.neighbourhood = static_cast<double>(neighbourhood[g]);
    }

    const Gate inputs(set, request, classification, ray, g);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (inputs.uses(i)) {
            explanation.input[i] =
                inputs.explain(i, decision.kind[g], decision.classes[g] == CLUTTER_PRECIPITATION);
        }
    }
    explanation.turning = nearestTurning(explanation);
    return explanation;
}

}  // namespace clutter::classifier
