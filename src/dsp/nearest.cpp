#include "dsp/nearest.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace clutter::dsp {

NearestValue::NearestValue(const float* x, int n) {
    if (n < 1 || std::isnan(x[0])) return;
    for (int i = 0; i < n; ++i) {
        if (std::isfinite(x[i])) sorted_.push_back({static_cast<double>(x[i]), i});
    }
    std::stable_sort(sorted_.begin(), sorted_.end(),
                     [](const Entry& a, const Entry& b) { return a.value < b.value; });
    const auto same = [](const Entry& a, const Entry& b) { return a.value == b.value; };
    sorted_.erase(std::unique(sorted_.begin(), sorted_.end(), same), sorted_.end());
}

int NearestValue::indexOf(float target) const {
    // An infinite target is equally far from everything, a NaN nowhere: element 0 stays.
    if (sorted_.empty() || !std::isfinite(target)) return 0;
    const auto wanted = static_cast<double>(target);
    const auto above =
        std::lower_bound(sorted_.begin(), sorted_.end(), wanted,
                         [](const Entry& entry, double value) { return entry.value < value; });
    const auto distance = [&](auto entry) { return std::abs(entry->value - wanted); };
    auto best = above == sorted_.end() ? above - 1 : above;
    if (above != sorted_.begin() && distance(above - 1) <= distance(best)) best = above - 1;
    // Far from the target, differences round to the same number: all these are equals, too.
    const double least = distance(best);
    int first = best->index;
    for (auto it = best; it != sorted_.end() && distance(it) == least; ++it) {
        first = std::min(first, it->index);
    }
    for (auto it = best; it != sorted_.begin() && distance(it - 1) == least; --it) {
        first = std::min(first, (it - 1)->index);
    }
    return first;
}

}  // namespace clutter::dsp
