/*
 * Decisions, without branches on data where every scan needs them.
 */
#include "classifier/evidence/decision.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "base/kernel.h"
#include "classifier/scan/scan_rows.h"
#include "clutterclassifier/classifier.h"

namespace clutter::classifier {
namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr std::uint8_t kCodes[kMaxClasses] = {CLUTTER_GROUND, CLUTTER_PRECIPITATION, CLUTTER_SEA,
                                              CLUTTER_TURBINE};

CLUTTER_KERNEL void takeFirst(const float* __restrict margins, float* __restrict best, int n) {
    for (int g = 0; g < n; ++g) {
        best[g] = margins[g];
    }
}

/* A kind that is stronger against precipitation than all before it. */
CLUTTER_KERNEL void takeStronger(const float* __restrict margins, std::uint8_t kind,
                                 float* __restrict best, std::uint8_t* __restrict kinds, int n) {
    for (int g = 0; g < n; ++g) {
        const bool stronger = margins[g] < best[g];
        kinds[g] = stronger ? kind : kinds[g];
        best[g] = stronger ? margins[g] : best[g];
    }
}

/* Two classes only. A NaN margin is clutter, as a NaN strength is to the engine. */
CLUTTER_KERNEL void decideBySign(const float* __restrict margins, std::uint8_t* __restrict classes,
                                 int n) {
    for (int g = 0; g < n; ++g) {
        classes[g] =
            margins[g] >= 0.0f ? std::uint8_t{CLUTTER_PRECIPITATION} : std::uint8_t{CLUTTER_GROUND};
    }
}

CLUTTER_KERNEL void blank(const std::uint8_t* __restrict states, std::uint8_t* __restrict classes,
                          float* __restrict margins, int n) {
    for (int g = 0; g < n; ++g) {
        const std::uint8_t other =
            states[g] == kNoise ? std::uint8_t{CLUTTER_NOISE} : std::uint8_t{CLUTTER_NOT_MEASURED};
        classes[g] = states[g] == kEcho ? classes[g] : other;
        margins[g] = states[g] == kEcho ? margins[g] : kNan;
    }
}

void nameKinds(Decision& decision) {
    for (std::size_t g = 0; g < decision.classes.size(); ++g) {
        if (decision.classes[g] == CLUTTER_PRECIPITATION) {
            continue;
        }
        decision.classes[g] = kCodes[classOfKind(decision.kind[g])];
    }
}

void takeWinners(const float* winners, Decision& decision) {
    for (std::size_t g = 0; g < decision.classes.size(); ++g) {
        const int code = static_cast<int>(winners[g]);
        decision.classes[g] = code < 0 ? std::uint8_t{CLUTTER_PRECIPITATION} : kCodes[code];
    }
}

}  // namespace

Decision::Decision(int gates)
    : classes(static_cast<std::size_t>(gates)),
      margin(static_cast<std::size_t>(gates)),
      kind(static_cast<std::size_t>(gates)) {}

void decide(const float* const* margins, int kinds, const float* winners,
            const std::uint8_t* states, Decision& decision) {
    const int n = static_cast<int>(decision.classes.size());
    takeFirst(margins[0], decision.margin.data(), n);
    std::fill(decision.kind.begin(), decision.kind.end(), std::uint8_t{0});
    for (int kind = 1; kind < kinds; ++kind) {
        takeStronger(margins[kind], static_cast<std::uint8_t>(kind), decision.margin.data(),
                     decision.kind.data(), n);
    }
    if (winners != nullptr) {
        takeWinners(winners, decision);
    } else {
        decideBySign(decision.margin.data(), decision.classes.data(), n);
        if (kinds > 1) {
            nameKinds(decision);
        }
    }
    blank(states, decision.classes.data(), decision.margin.data(), n);
}

void findDeciding(const EvidenceRow& row, const float* neighbourhood, const std::uint8_t* states,
                  const Decision& decision, std::uint8_t* deciding) {
    for (std::size_t g = 0; g < decision.classes.size(); ++g) {
        deciding[g] = CLUTTER_BY_NONE;
        if (states[g] != kEcho || decision.margin[g] == 0.0f) {
            continue;
        }
        const float sign = decision.classes[g] == CLUTTER_PRECIPITATION ? 1.0f : -1.0f;
        float most = 0.0f;
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            const std::vector<float>& shares = row.shares[decision.kind[g]][i];
            if (shares.empty() || !(sign * shares[g] > most)) {
                continue;
            }
            most = sign * shares[g];
            deciding[g] = static_cast<std::uint8_t>(i);
        }
        if (neighbourhood != nullptr && sign * neighbourhood[g] > most) {
            deciding[g] = CLUTTER_BY_NEIGHBOURHOOD;
        }
    }
}

}  // namespace clutter::classifier
