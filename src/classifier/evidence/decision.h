/*
 * decision.h - from a ray's evidence to classes, margins and reasons.
 */
#ifndef CLUTTER_CLASSIFIER_DECISION_H
#define CLUTTER_CLASSIFIER_DECISION_H

#include <cstdint>
#include <vector>

#include "classifier/evidence/evidence.h"

namespace clutter::classifier {

/* One ray's results. */
struct Decision {
    explicit Decision(int gates);

    std::vector<std::uint8_t> classes;
    std::vector<float> margin;
    std::vector<std::uint8_t> kind;  // of clutter, the strongest
};

/*
 * Fills classes and margin. margins holds one row per kind. With winners the classes are those of
 * the fuzzy system; with null the margin's sign decides.
 */
void decide(const float* const* margins, int kinds, const float* winners,
            const std::uint8_t* states, Decision& decision);

/* The input that contributes most to the class of each gate, from the shares of the strongest kind;
 * neighbourhood holds the neighbourhood's share, or is null. */
void findDeciding(const EvidenceRow& row, const float* neighbourhood, const std::uint8_t* states,
                  const Decision& decision, std::uint8_t* deciding);

}  // namespace clutter::classifier

#endif
