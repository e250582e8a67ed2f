/* find_field.h - a field by the name that somebody typed. */
#ifndef SCAN_FIELDS_FIND_FIELD_H
#define SCAN_FIELDS_FIND_FIELD_H

#include <cstddef>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace scan {

/* As the file writes it, or else in another case. Throws std::runtime_error that lists the names.
 */
const Field& findField(const Sweep& sweep, const std::string& name);

/* The same among names; returns the index. */
std::size_t findName(const std::vector<std::string>& names, const std::string& name);

}  // namespace scan

#endif
