/*
 * evidence.h - for every gate of a ray, how far the inputs favour precipitation over clutter.
 */
#ifndef CLUTTER_CLASSIFIER_EVIDENCE_H
#define CLUTTER_CLASSIFIER_EVIDENCE_H

#include <cstdint>
#include <vector>

#include "classifier/functions/membership_set.h"
#include "classifier/scan/request.h"
#include "classifier/scan/scan_rows.h"
#include "driver/scan_inputs.h"
#include "fuzzy/classifiers/inputs.h"
#include "fuzzy/engine/ranking.h"

namespace clutter::classifier {

constexpr int kMaxKinds = kMaxClasses - 1;  // of clutter: ground, sea, wind turbines

/* The class of the fuzzy system that a kind of clutter is. */
constexpr int classOfKind(int kind) {
    return kind == 0 ? 0 : kind + 1;
}

/* Log ratios of precipitation over each kind of clutter, one per gate; undefined where a gate is
 * not classified. */
struct EvidenceRow {
    std::vector<float> textures[kMaxKinds];  // of the texture inputs; else of all inputs
    std::vector<float> others[kMaxKinds];    // of the other inputs, where textures are apart
    std::vector<float> winners;  // codes of more than two classes, where textures are not apart
    std::vector<float> shares[kMaxKinds][fuzzy::kInputCount];  // of each input, where wanted
};

/* Allocates in its constructor only. */
class Evidence {
  public:
    struct Wanted {
        bool texturesApart;
        bool shares;
    };

    Evidence(const MembershipSet& set, const Request& request, driver::ScanInputs& inputs,
             GateStates& states, Wanted wanted);

    /* A row with room for everything that is wanted. */
    EvidenceRow makeRow() const;

    /* Computes the evidence of a ray; going on by one ray is fastest. */
    void compute(int ray, EvidenceRow& row);

    int kinds() const { return request_.classes - 1; }

  private:
    static constexpr int kBlock = fuzzy::Table::kMaxElements;

    /* The inputs from first to last - 1 that are in use, at n gates. */
    struct Slice {
        int first;
        int last;
        const float* const* inputs;
        int n;
    };

    void computeBlock(int start, int n, EvidenceRow& row);
    void multiply(const Slice& slice, int start, EvidenceRow& row);
    void multiplyQuickly(const Slice& slice);
    void multiplyExactly(int input, const float* x, int n);
    void takeShares(int input, int start, int n, EvidenceRow& row) const;
    void takeLogs(std::vector<float> (&rows)[kMaxKinds], int start, int n) const;
    void decideCloseOnes(const float* const* inputs, float* margins, int n);

    const MembershipSet& set_;
    const Request& request_;
    driver::ScanInputs& inputs_;
    GateStates& states_;
    Wanted wanted_;
    bool quick_;  // products of two classes by lookup
    fuzzy::Ranking ranking_;
    double degrees_[kMaxClasses][kBlock];
    double strengths_[kMaxClasses][kBlock];
    ClassPair pairs_[kBlock];
    float gathered_[kBlock];
};

}  // namespace clutter::classifier

#endif
