/* quantile.h - values by their place in the order of a list. */
#ifndef SCAN_QUANTILE_H
#define SCAN_QUANTILE_H

#include <algorithm>
#include <cstddef>
#include <vector>

namespace scan {

/* The value at an index of the sorted list. The list is reordered, and must be longer than index.
 */
template <class Value>
Value valueOfRank(std::vector<Value>& values, std::size_t index) {
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(index);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

/* Index of a quantile among this many sorted values, at least one; share is from 0 to 1. */
inline std::size_t rankOfShare(double share, std::size_t count) {
    return static_cast<std::size_t>(share * static_cast<double>(count - 1));
}

/* The upper one of an even number; the list has at least one value. */
template <class Value>
Value upperMedian(std::vector<Value> values) {
    return valueOfRank(values, values.size() / 2);
}

}  // namespace scan

#endif
