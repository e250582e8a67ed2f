/*
 * classification.h - a checked scan through textures, evidence, neighbourhood and decision.
 */
#ifndef CLUTTER_CLASSIFIER_CLASSIFICATION_H
#define CLUTTER_CLASSIFIER_CLASSIFICATION_H

#include <optional>
#include <vector>

#include "classifier/evidence/decision.h"
#include "classifier/evidence/evidence.h"
#include "classifier/evidence/neighbourhood.h"
#include "classifier/functions/membership_set.h"
#include "classifier/scan/request.h"
#include "classifier/scan/scan_rows.h"

namespace clutter::classifier {

/* Decides ray by ray. Allocates in its constructor only. */
class Classification {
  public:
    Classification(const MembershipSet& set, const Request& request, bool shares);

    /* Decides a ray: any one first, from then on each the one after the last. */
    const Decision& decideRay(int ray);

    /* More about the ray that was decided last. */
    const EvidenceRow& evidence() const { return *current_; }
    const float* margins(int kind) const { return margins_[kind]; }
    const float* neighbourhoodShare() const { return share_.empty() ? nullptr : share_.data(); }
    const Neighbourhood* neighbourhood() const {
        return neighbourhood_ ? &*neighbourhood_ : nullptr;
    }
    const float* means(int kind) const { return means_[kind].data(); }
    const std::uint8_t* states(int ray) const { return states_.states(ray); }

    /* The rows of any ray. Decisions that follow must begin anew. */
    driver::ScanInputs& inputs() { return inputs_; }

  private:
    EvidenceRow& rowOf(int logicalRay);
    void enter(int logicalRay);
    void average(int ray);
    void findShare();

    const Request& request_;
    ScanRows rows_;
    GateStates states_;
    driver::ScanInputs inputs_;
    Evidence evidence_;
    std::optional<Neighbourhood> neighbourhood_;
    int ahead_;                   // rays that the window reaches to either side
    std::optional<int> entered_;  // the ray that entered last, counted on past the scan's ends
    std::vector<EvidenceRow> ring_;
    EvidenceRow* current_ = nullptr;
    std::vector<float> means_[kMaxKinds];     // of the textures' evidence
    std::vector<float> averaged_[kMaxKinds];  // with the other inputs
    std::vector<float> share_;
    const float* margins_[kMaxKinds] = {};
    Decision decision_;
};

}  // namespace clutter::classifier

#endif
