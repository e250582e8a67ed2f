/*
 * Sorted values in equal buckets: a target is looked up in one or two values of its bucket.
 */
#include "dsp/search/nearest.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace clutter::dsp {

NearestValue::NearestValue(const float* x, int n) {
    if (n < 1 || std::isnan(x[0])) {
        return;
    }
    for (int i = 0; i < n; ++i) {
        if (std::isfinite(x[i])) {
            sorted_.push_back({static_cast<double>(x[i]), i});
        }
    }
    std::stable_sort(sorted_.begin(), sorted_.end(),
                     [](const Entry& a, const Entry& b) { return a.value < b.value; });
    const auto same = [](const Entry& a, const Entry& b) { return a.value == b.value; };
    sorted_.erase(std::unique(sorted_.begin(), sorted_.end(), same), sorted_.end());
    if (!sorted_.empty()) {
        divide();
    }
}

void NearestValue::divide() {
    lowest_ = sorted_.front().value;
    const double span = sorted_.back().value - lowest_;
    if (span > 0.0) {
        bucketsPerUnit_ = static_cast<double>(sorted_.size()) / span;
    }
    // The greatest value has a bucket of its own.
    start_.assign(sorted_.size() + 2, sorted_.size());
    for (std::size_t i = sorted_.size(); i-- > 0;) {
        start_[bucketOf(sorted_[i].value)] = i;
    }
    for (std::size_t b = start_.size() - 1; b-- > 0;) {
        start_[b] = std::min(start_[b], start_[b + 1]);
    }
}

/* Monotonic despite rounding: a value in a lower bucket is lower. */
std::size_t NearestValue::bucketOf(double value) const {
    const double bucket = (value - lowest_) * bucketsPerUnit_;
    const auto last = static_cast<double>(sorted_.size());
    return static_cast<std::size_t>(std::min(std::max(bucket, 0.0), last));
}

std::size_t NearestValue::lowerBound(double value) const {
    const std::size_t bucket = bucketOf(value);
    const auto at = [this](std::size_t i) {
        return sorted_.begin() + static_cast<std::ptrdiff_t>(i);
    };
    const auto found =
        std::lower_bound(at(start_[bucket]), at(start_[bucket + 1]), value,
                         [](const Entry& entry, double wanted) { return entry.value < wanted; });
    return static_cast<std::size_t>(found - sorted_.begin());
}

/* Far from the target, differences round to the same number: neighbours of the best value may be at
 * the same distance. */
int NearestValue::firstOfEquals(std::size_t best, double target) const {
    const auto distance = [&](std::size_t i) { return std::abs(sorted_[i].value - target); };
    const double least = distance(best);
    int first = sorted_[best].index;
    for (std::size_t i = best + 1; i < sorted_.size() && distance(i) == least; ++i) {
        first = std::min(first, sorted_[i].index);
    }
    for (std::size_t i = best; i-- > 0 && distance(i) == least;) {
        first = std::min(first, sorted_[i].index);
    }
    return first;
}

int NearestValue::indexOf(float target) const {
    // All values are equally far from an infinite target or NaN: element 0 is found.
    if (sorted_.empty() || !std::isfinite(target)) {
        return 0;
    }
    const auto wanted = static_cast<double>(target);
    const std::size_t above = lowerBound(wanted);
    if (above == 0) {
        return firstOfEquals(0, wanted);
    }
    if (above == sorted_.size()) {
        return firstOfEquals(above - 1, wanted);
    }
    const bool below = wanted - sorted_[above - 1].value <= sorted_[above].value - wanted;
    return firstOfEquals(below ? above - 1 : above, wanted);
}

}  // namespace clutter::dsp
