/*
 * The order of work: a ray's evidence enters the neighbourhood as many rays ahead as the window
 * reaches, and the ray in its middle is decided.
 */
#include "classifier/classification.h"

#include <cstddef>

#include "base/kernel.h"
#include "base/number.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void addRows(const float* __restrict a, const float* __restrict b,
                            float* __restrict sums, int n) {
    for (int g = 0; g < n; ++g) {
        sums[g] = a[g] + b[g];
    }
}

}  // namespace

Classification::Classification(const MembershipSet& set, const Request& request, bool shares)
    : request_(request),
      rows_(request),
      states_(request, rows_),
      inputs_(rows_.fields(), request.inputs, states_, request.shape, request.texture),
      evidence_(set, request, inputs_, states_, {request.usesNeighbourhood(), shares}),
      ahead_(request.usesNeighbourhood() ? request.neighbourhood.rays / 2 : 0),
      decision_(request.gates) {
    for (int k = 0; k <= ahead_; ++k) {
        ring_.push_back(evidence_.makeRow());
    }
    if (!request.usesNeighbourhood()) {
        return;
    }
    neighbourhood_.emplace(request.gates, request.neighbourhood, evidence_.kinds());
    const auto n = static_cast<std::size_t>(request.gates);
    for (int kind = 0; kind < evidence_.kinds(); ++kind) {
        means_[kind].resize(n);
        averaged_[kind].resize(n);
    }
    if (shares) {
        share_.resize(n);
    }
}

EvidenceRow& Classification::rowOf(int logicalRay) {
    return ring_[static_cast<std::size_t>(base::floorModulo(logicalRay, ahead_ + 1))];
}

void Classification::enter(int logicalRay) {
    const bool outside = logicalRay < 0 || logicalRay >= request_.rays;
    if (outside && request_.sector) {
        if (neighbourhood_) {
            neighbourhood_->enter(logicalRay, nullptr, nullptr);
        }
        return;
    }
    const int ray = base::floorModulo(logicalRay, request_.rays);
    EvidenceRow& row = rowOf(logicalRay);
    evidence_.compute(ray, row);
    if (neighbourhood_) {
        neighbourhood_->enter(logicalRay, &row, states_.states(ray));
    }
}

void Classification::average(int ray) {
    for (int kind = 0; kind < evidence_.kinds(); ++kind) {
        neighbourhood_->mean(ray, kind, means_[kind].data());
        addRows(means_[kind].data(), current_->others[kind].data(), averaged_[kind].data(),
                request_.gates);
        margins_[kind] = averaged_[kind].data();
    }
}

/* What the neighbours add to the gate's own textures, as far as these count as a member. */
void Classification::findShare() {
    for (std::size_t g = 0; g < share_.size(); ++g) {
        const int kind = decision_.kind[g];
        const auto own = static_cast<double>(current_->textures[kind][g]);
        share_[g] = means_[kind][g];
        if (own == own) {
            share_[g] -= static_cast<float>(limitEvidence(own));
        }
    }
}

const Decision& Classification::decideRay(int ray) {
    int next = entered_ ? *entered_ + 1 : ray - ahead_;
    for (; next <= ray + ahead_; ++next) {
        enter(next);
    }
    entered_ = ray + ahead_;
    current_ = &rowOf(ray);
    if (neighbourhood_) {
        average(ray);
    } else {
        for (int kind = 0; kind < evidence_.kinds(); ++kind) {
            margins_[kind] = current_->textures[kind].data();
        }
    }
    decide(margins_, evidence_.kinds(),
           current_->winners.empty() ? nullptr : current_->winners.data(), states_.states(ray),
           decision_);
    findShare();
    return decision_;
}

}  // namespace clutter::classifier
