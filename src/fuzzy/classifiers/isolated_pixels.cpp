/*
 * Window counts from running sums: along each ray once, then from ray to ray.
 */
#include "fuzzy/classifiers/isolated_pixels.h"

#include <algorithm>
#include <cstddef>

#include "base/array.h"
#include "base/kernel.h"
#include "clutterclassifier/Cradarpro.h"

namespace clutter::fuzzy {
namespace {

/* Sums of ones over g - half .. g + half, where members beyond the ends repeat the edge gate. */
void sumAlongRay(const float* cls, int ngates, int half, std::uint32_t* sums) {
    const auto one = [cls](std::int64_t g) -> std::int64_t { return cls[g] == 0.0f ? 1 : 0; };
    const std::int64_t last = ngates - 1;
    // Window of gate 0: the edge gate counts for itself and for the half members before it.
    std::int64_t sum = one(0) * (static_cast<std::int64_t>(half) + 1);
    const std::int64_t inside = std::min<std::int64_t>(half, last);
    for (std::int64_t g = 1; g <= inside; ++g) {
        sum += one(g);
    }
    sum += one(last) * (half - inside);
    sums[0] = static_cast<std::uint32_t>(sum);
    for (std::int64_t g = 1; g <= last; ++g) {
        sum += one(std::min(g + half, last)) - one(std::max<std::int64_t>(g - half - 1, 0));
        sums[g] = static_cast<std::uint32_t>(sum);
    }
}

CLUTTER_KERNEL void addRow(const std::uint32_t* row, std::int64_t times,
                           std::int64_t* __restrict counts, int n) {
    for (int g = 0; g < n; ++g) {
        counts[g] += times * static_cast<std::int64_t>(row[g]);
    }
}

CLUTTER_KERNEL void flagFew(const float* cls, const std::int64_t* counts, int most, float* flags,
                            int n) {
    for (int g = 0; g < n; ++g) {
        const std::int64_t members = cls[g] == 0.0f ? counts[g] : INT64_MAX;
        flags[g] = members <= most ? 1.0f : 0.0f;
    }
}

}  // namespace

ZeroCounter::ZeroCounter(const float* cls, int ngates, int nrays, int wgates, int wrays)
    : ngates_(ngates),
      nrays_(nrays),
      halfRays_(wrays / 2),
      alongRay_(base::cellCount(ngates, nrays)),
      counts_(static_cast<std::size_t>(ngates), 0) {
    for (int r = 0; r < nrays; ++r) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * ngates;
        sumAlongRay(cls + at, ngates, wgates / 2, alongRay_.data() + at);
    }
}

const std::int64_t* ZeroCounter::next() {
    ++ray_;
    if (ray_ > 0) {
        add(ray_ + halfRays_, 1);
        add(ray_ - halfRays_ - 1, -1);
        return counts_.data();
    }
    // A window wider than the scan meets every ray several times.
    const std::int64_t members = 2 * static_cast<std::int64_t>(halfRays_) + 1;
    for (int r = 0; members / nrays_ > 0 && r < nrays_; ++r) {
        add(r, members / nrays_);
    }
    for (std::int64_t k = 0; k < members % nrays_; ++k) {
        add(k - halfRays_, 1);
    }
    return counts_.data();
}

void ZeroCounter::add(std::int64_t logicalRay, std::int64_t times) {
    const std::int64_t remainder = logicalRay % nrays_;
    const std::int64_t ray = remainder < 0 ? remainder + nrays_ : remainder;
    addRow(alongRay_.data() + ray * ngates_, times, counts_.data(), ngates_);
}

}  // namespace clutter::fuzzy

void Cradarpro::GetIsolatedPixels(float* cls, float* flags, int ngates, int nrays, int wgates,
                                  int wrays, int maxcount) {
    if (cls == nullptr || flags == nullptr || ngates < 1 || nrays < 1) {
        return;
    }
    if (wgates <= 1 || wrays <= 1) {
        return;
    }
    clutter::fuzzy::ZeroCounter counter(cls, ngates, nrays, wgates, wrays);
    for (int r = 0; r < nrays; ++r) {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(r) * ngates;
        clutter::fuzzy::flagFew(cls + at, counter.next(), maxcount, flags + at, ngates);
    }
}
