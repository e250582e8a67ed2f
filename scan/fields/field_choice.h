/* field_choice.h - which field of a sweep plays which role. */
#ifndef SCAN_FIELDS_FIELD_CHOICE_H
#define SCAN_FIELDS_FIELD_CHOICE_H

#include <string>

#include "scan/fields/field_map.h"
#include "scan/fields/role.h"
#include "scan/scan.h"

namespace scan {

struct FieldChoice {
    const Field* fields[kRoleCount] = {};  // null: the sweep has none
    std::string notes[kRoleCount];         // fields that were passed over or look odd; mostly empty
    const Field* operator[](Role role) const { return fields[static_cast<int>(role)]; }
};

/*
 * One field per role. A field that the user mapped is taken as it is; otherwise the known names
 * count, the quantity before the clutter filter first. A field that holds no value or a single one
 * is left out, and one that mostly lies outside the range of its quantity gives way to another of
 * the same role. Throws std::runtime_error when map names a field that the sweep does not have, or
 * one field in two spellings.
 */
FieldChoice chooseFields(const Sweep& sweep, const FieldMap& map);

/* A clutter filter changes at least this share of the gates. */
constexpr double kFilterShare = 0.01;

/*
 * Whether the velocity was measured after a clutter filter, where clutter is no longer at rest:
 * the reflectivity that was chosen is the one before the filter, another one differs from it, and
 * the velocity's name does not say otherwise. Never for a velocity that the user mapped.
 */
bool isVelocityFiltered(const Sweep& sweep, const FieldChoice& choice, const FieldMap& map);

}  // namespace scan

#endif
