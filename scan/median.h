/* median.h - the middle of a list. */
#ifndef SCAN_MEDIAN_H
#define SCAN_MEDIAN_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace scan {

/* The upper one of an even number; the list has at least one value. */
template <class Value>
Value upperMedian(std::vector<Value> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace scan

#endif
