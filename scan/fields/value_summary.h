/* value_summary.h - what the values of a field look like. */
#ifndef SCAN_FIELDS_VALUE_SUMMARY_H
#define SCAN_FIELDS_VALUE_SUMMARY_H

#include <vector>

#include "scan/fields/role.h"

namespace scan {

struct ValueSummary {
    long count = 0;  // of the gates that have a value
    float lowest = 0, highest = 0;
    double shareInRange = 1;  // of them, within the ends of the role
    [[nodiscard]] bool constant() const { return count > 0 && lowest == highest; }
};
ValueSummary summarise(const std::vector<float>& values, Role role);

/* The upper median of the finite values; 0 where there are none. Costs several times a summary. */
float medianOf(const std::vector<float>& values);

}  // namespace scan

#endif
