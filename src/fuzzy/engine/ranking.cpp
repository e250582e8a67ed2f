/*
 * One comparison per rule and element, without branches on data.
 */
#include "fuzzy/engine/ranking.h"

#include "base/kernel.h"

namespace clutter::fuzzy {
namespace {

CLUTTER_KERNEL void rankNext(const double* __restrict strength, float code, int n,
                             double* __restrict best, float* __restrict winner,
                             int* __restrict differ) {
    for (int j = 0; j < n; ++j) {
        const bool stronger = strength[j] > best[j];
        differ[j] |= strength[j] == best[j] ? 0 : 1;
        best[j] = stronger ? strength[j] : best[j];
        winner[j] = stronger ? code : winner[j];
    }
}

}  // namespace

void Ranking::begin(const double* strength, float code, int n) {
    for (int j = 0; j < n; ++j) {
        best_[j] = strength[j];
        winner_[j] = code;
        differ_[j] = strength[j] == strength[j] ? 0 : 1;
    }
}

void Ranking::add(const double* strength, float code, int n) {
    rankNext(strength, code, n, best_, winner_, differ_);
}

void Ranking::winners(float* out, int n) const {
    for (int j = 0; j < n; ++j) {
        out[j] = differ_[j] != 0 ? winner_[j] : -1.0f;
    }
}

}  // namespace clutter::fuzzy
