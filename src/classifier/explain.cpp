/*
 * One gate's inputs, degrees and contributions, and for each input the nearest value that would
 * turn the verdict between precipitation and clutter.
 */
#include "classifier/explain.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "classifier/classification.h"
#include "classifier/evidence/log_ratio.h"

namespace clutter::classifier {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double degreeOf(const fuzzy::Term& term, float x, bool leftOut) {
    double degree = 1.0;
    if (!leftOut) {
        fuzzy::evaluateTerm(term, &x, &degree, 1);
    }
    return degree;
}

/* One input of a gate, and the gate's margins over each kind of clutter. */
class TurningPoint {
  public:
    TurningPoint(const InputFunctions& functions, float value, double weight)
        : functions_(functions), value_(value), weight_(weight) {}

    void addKind(int kind, double margin) {
        kinds_.push_back({kind, margin - weight_ * ratioAt(value_, kind)});
    }

    /* The nearest value with the other verdict; NaN when there is none. */
    double find() const {
        if (std::isnan(value_)) {
            return kNan;
        }
        const std::vector<float> corners = findCorners();
        const auto above = std::upper_bound(corners.begin(), corners.end(), value_);
        const double up = search(above, corners.end());
        const auto below = std::lower_bound(corners.begin(), corners.end(), value_);
        const double down =
            search(std::make_reverse_iterator(below), std::make_reverse_iterator(corners.begin()));
        if (std::isnan(down)) {
            return up;
        }
        const auto value = static_cast<double>(value_);
        return up - value < value - down ? up : down;  // also where up is NaN
    }

  private:
    struct Kind {
        int kind;
        double rest;  // of the margin, without this input
    };

    double ratioAt(float x, int kind) const {
        const double above = degreeOf(functions_.terms[kPrecipitationClass], x, false);
        const auto clutter = static_cast<std::size_t>(classOfKind(kind));
        return logRatio(above, degreeOf(functions_.terms[clutter], x, false));
    }

    bool isPrecipitation(float x) const {
        return std::all_of(kinds_.begin(), kinds_.end(), [&](const Kind& kind) {
            return kind.rest + weight_ * ratioAt(x, kind.kind) >= 0.0;
        });
    }

    /* The values on both sides of each point of the tables, sorted: in between, ratios are
     * monotone. */
    std::vector<float> findCorners() const {
        std::vector<float> corners;
        for (const auto& table : functions_.tables) {
            if (table == nullptr) {
                continue;
            }
            for (const float threshold : table->thresholds()) {
                corners.push_back(std::nextafter(threshold, -HUGE_VALF));
                corners.push_back(threshold);
            }
        }
        if (corners.empty()) {
            corners = {0.0f, 1.0f};  // a degree itself
        }
        std::sort(corners.begin(), corners.end());
        return corners;
    }

    /* Walks away from the value, corner by corner. */
    template <class Iterator>
    double search(Iterator next, Iterator end) const {
        const bool verdict = isPrecipitation(value_);
        float kept = value_;
        for (; next != end; ++next) {
            if (isPrecipitation(*next) != verdict) {
                return halve(kept, *next, verdict);
            }
            kept = *next;
        }
        return kNan;
    }

    /* The first value from kept to turned that turns the verdict. */
    double halve(float kept, float turned, bool verdict) const {
        for (;;) {
            const float middle = 0.5f * kept + 0.5f * turned;
            if (middle == kept || middle == turned) {
                return static_cast<double>(turned);
            }
            (isPrecipitation(middle) == verdict ? kept : turned) = middle;
        }
    }

    const InputFunctions& functions_;
    float value_;
    double weight_;
    std::vector<Kind> kinds_;
};

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

    classification.inputs().moveTo(ray);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((request.inputs & (1u << i)) == 0) {
            continue;
        }
        const float value = classification.inputs().row(i)[g];
        const bool leftOut = request.nanIsNotMeasured && std::isnan(value);
        const InputFunctions& functions = set.input(i);
        const auto clutter = static_cast<std::size_t>(classOfKind(decision.kind[g]));
        clutter_input_share& share = explanation.input[i];
        share.value = static_cast<double>(value);
        share.precipitation = degreeOf(functions.terms[kPrecipitationClass], value, leftOut);
        share.clutter = degreeOf(functions.terms[clutter], value, leftOut);
        share.contribution = logRatio(share.precipitation, share.clutter);
        const bool averaged = request.usesNeighbourhood() && fuzzy::kInputs[i].texture;
        const float* counts = classification.memberCounts();
        TurningPoint turning(functions, value,
                             averaged ? 1.0 / static_cast<double>(counts[g]) : 1.0);
        for (int kind = 0; kind < request.classes - 1; ++kind) {
            turning.addKind(kind, static_cast<double>(classification.margins(kind)[g]));
        }
        share.turning_value = turning.find();
    }
    explanation.turning = nearestTurning(explanation);
    return explanation;
}

}  // namespace clutter::classifier
