/* field_map.h - the roles that a user gives to fields. */
#ifndef SCAN_FIELDS_FIELD_MAP_H
#define SCAN_FIELDS_FIELD_MAP_H

#include <map>
#include <string>

#include "scan/fields/role.h"

namespace scan {

/* Names of fields and their roles. */
using FieldMap = std::map<std::string, Role>;

/* Parses "ZD=zdr,ZT=zhh": a role is one of the keys, a known field name, or "none". Throws
 * std::invalid_argument, also for a field or a role that comes twice. */
FieldMap parseFieldMap(const std::string& text);

}  // namespace scan

#endif
