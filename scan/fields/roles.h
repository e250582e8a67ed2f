/* roles.h - fields of a sweep and their roles: everything in one include. */
#ifndef SCAN_FIELDS_ROLES_H
#define SCAN_FIELDS_ROLES_H

#include "scan/fields/class_codes.h"
#include "scan/fields/field_choice.h"
#include "scan/fields/field_map.h"
#include "scan/fields/role.h"
#include "scan/fields/value_summary.h"
#include "scan/text.h"

#endif
