/* missing.h - gates without a value, and what the library is given for them. */
#ifndef SCAN_FIELDS_MISSING_H
#define SCAN_FIELDS_MISSING_H

#include <vector>

#include "scan/fields/role.h"
#include "scan/scan.h"

namespace scan {

/* Whether a gate has no value of a quantity. The library's mark of no rain counts as none, and so
 * do infinite values (which less themselves are NaN). */
inline bool isMissing(Role role, float value) {
    return (value - value != 0) | ((role == Role::kZhh) & (value == kNoRainDbz));
}

/* What a gate without a value holds: no echo; a clutter likelihood that favours neither class; NaN,
 * where the membership functions favour neither. */
float fillValue(Role role);

/* Gives every gate without a value the value above. */
void replaceMissing(Role role, std::vector<float>& values);

}  // namespace scan

#endif
