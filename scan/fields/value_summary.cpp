/* value_summary.cpp - counts, ends, median. */
#include "scan/fields/value_summary.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "scan/median.h"

namespace scan {

ValueSummary summarise(const std::vector<float>& values, Role role) {
    std::vector<float> present;
    present.reserve(values.size());
    std::copy_if(values.begin(), values.end(), std::back_inserter(present),
                 [](float value) { return std::isfinite(value); });
    ValueSummary summary;
    summary.count = static_cast<long>(present.size());
    if (present.empty()) {
        return summary;
    }
    const auto ends = std::minmax_element(present.begin(), present.end());
    summary.lowest = *ends.first;
    summary.highest = *ends.second;
    const RoleInfo& info = roleInfo(role);
    const auto inside = std::count_if(present.begin(), present.end(), [&](float value) {
        return value >= info.lowest && value <= info.highest;
    });
    summary.shareInRange = static_cast<double>(inside) / static_cast<double>(present.size());
    summary.median = upperMedian(std::move(present));
    return summary;
}

}  // namespace scan
