/*
 * The rainfall stage: one relation over the whole scan, or a better one where it is trustworthy.
 */
#include <vector>

#include "clutterclassifier/Crres.h"
#include "corrections/scan_geometry.h"
#include "model/field_access.h"

using clutter::corrections::gateHeights;
using clutter::corrections::meltingLayerBase;
using clutter::model::cells;
using clutter::model::forEachRay;
using clutter::model::holdAll;
using clutter::model::valuesOf;

namespace {

constexpr int kZRelation = 0;
constexpr int kZZdrRelation = 1;

/* Differential reflectivity improves rates in rain that is neither light nor mixed with ice or
 * hail. */
bool isTrustworthy(float zhh, float zdr) {
    return zhh > 15.0f && zdr > 0.3f && zdr < 5.0f;
}

bool isBelowMeltingLayer(double beamHeight, float freezingLevel) {
    const double rounded = static_cast<double>(static_cast<float>(beamHeight));
    return rounded <= meltingLayerBase(freezingLevel);
}

}  // namespace

void Crres::PrecipitationEstimation(int alg) {
    const std::size_t n = cells(zhh);
    if (!holdAll({&zhh, &rain, &fzl}, n)) {
        return;
    }
    const bool hybrid = alg < 0;
    float* const zdrs = valuesOf(zdr, n);
    if (hybrid && zdrs == nullptr) {
        return;
    }
    forEachRay(zhh, [&](std::ptrdiff_t at, int count) {
        radarpro.RainfallEstimation(zhh.data + at, zdrs != nullptr ? zdrs + at : nullptr, nullptr,
                                    count, hybrid ? kZRelation : alg, nullptr, 0, rain.data + at);
    });
    if (!hybrid) {
        return;
    }

    const std::vector<double> heights = gateHeights(zhh);
    std::vector<float> better(heights.size());
    forEachRay(zhh, [&](std::ptrdiff_t at, int count) {
        radarpro.RainfallEstimation(zhh.data + at, zdrs + at, nullptr, count, kZZdrRelation,
                                    nullptr, 0, better.data());
        for (int g = 0; g < count; ++g) {
            const std::size_t gate = static_cast<std::size_t>(g);
            if (isTrustworthy(zhh.data[at + g], zdrs[at + g]) &&
                isBelowMeltingLayer(heights[gate], fzl.data[at + g])) {
                rain.data[at + g] = better[gate];
            }
        }
    });
}
