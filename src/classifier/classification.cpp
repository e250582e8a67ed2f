/*
 * The order of work: a ray's evidence enters the neighbourhood as many rays ahead as the window
 * reaches, and the ray in its middle is decided.
 */
#include "classifier/classification.h"

#include <cstddef>

#include "base/kernel.h"

namespace clutter::classifier {
namespace {

CLUTTER_KERNEL void addTo(float* __restrict sums, const float* __restrict values, int n) {
    for (int g = 0; g < n; ++g) {
        sums[g] += values[g];
    }
}

int floorModulo(int value, int divisor) {
    const int remainder = value % divisor;
    return remainder < 0 ? remainder + divisor : remainder;
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
        averaged_[kind].resize(n);
    }
    if (shares) {
        share_.resize(n);
    }
}

const float* Classification::memberCounts() const {
    return neighbourhood_ ? neighbourhood_->counts() : nullptr;
}

EvidenceRow& Classification::rowOf(int logicalRay) {
    return ring_[static_cast<std::size_t>(floorModulo(logicalRay, ahead_ + 1))];
}

void Classification::enter(int logicalRay) {
    const bool outside = logicalRay < 0 || logicalRay >= request_.rays;
    if (outside && request_.sector) {
        if (neighbourhood_) {
            neighbourhood_->enter(logicalRay, nullptr, nullptr);
        }
        return;
    }
    const int ray = floorModulo(logicalRay, request_.rays);
    EvidenceRow& row = rowOf(logicalRay);
    evidence_.compute(ray, row);
    if (neighbourhood_) {
        neighbourhood_->enter(logicalRay, &row, states_.states(ray));
    }
}

void Classification::average(int ray) {
    for (int kind = 0; kind < evidence_.kinds(); ++kind) {
        float* const averaged = averaged_[kind].data();
        neighbourhood_->mean(ray, kind, averaged);
        addTo(averaged, current_->others[kind].data(), request_.gates);
        margins_[kind] = averaged;
    }
}

/* The margin less the shares of the gate's own inputs. */
void Classification::findShare() {
    for (std::size_t g = 0; g < share_.size(); ++g) {
        share_[g] = decision_.margin[g];
        for (const std::vector<float>& own : current_->shares[decision_.kind[g]]) {
            if (!own.empty()) {
                share_[g] -= own[g];
            }
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
