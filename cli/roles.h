/*
 * roles.h - which field of a file plays which part: names of many systems, their units and ranges.
 */
#ifndef CLI_ROLES_H
#define CLI_ROLES_H

#include <map>
#include <string>
#include <vector>

#include "scan.h"

namespace cli {

enum class Role { kZhh, kZdr, kPdp, kRhv, kVel, kWid, kLdr, kPdf, kKdp, kNone };
constexpr int kRoleCount = static_cast<int>(Role::kNone);

struct RoleInfo {
    const char* key;   /* as options and reports name it: "zhh" */
    const char* text;  /* "horizontal reflectivity" */
    const char* units; /* "dBZ" */
    float lowest;      /* values beyond these ends cannot be the quantity */
    float highest;
};
const RoleInfo& roleInfo(Role role);

/* The role of a field by its name, whatever its case; kNone when the name is not known. */
Role roleOfName(const std::string& name);

/* Names of fields and the roles that the user gave them. */
using FieldMap = std::map<std::string, Role>;

/* Parses "ZD=zdr,ZT=zhh": a role is one of the keys, a known field name, or "none". Throws
 * std::invalid_argument. */
FieldMap parseFieldMap(const std::string& text);

/* What the values of a field look like. */
struct ValueSummary {
    long count = 0; /* of values that are there */
    float lowest = 0, median = 0, highest = 0;
    double shareInRange = 1; /* of them, within the ends of the role */
    bool constant() const { return count > 0 && lowest == highest; }
};
ValueSummary summarise(const std::vector<float>& values, Role role);

struct FieldChoice {
    const Field* fields[kRoleCount] = {}; /* null: the sweep has none */
    std::string notes[kRoleCount];        /* what was passed over or looks odd; mostly empty */
    const Field* operator[](Role role) const { return fields[static_cast<int>(role)]; }
};

/*
 * One field per role. What the user mapped is taken as it is; otherwise the known names, the
 * quantity before the clutter filter first. A field that holds no value or a single one is left
 * out, and one that mostly lies outside the range of its quantity gives way to another of the same
 * role. Throws std::runtime_error when map names a field that the sweep does not have.
 */
FieldChoice chooseFields(const Sweep& sweep, const FieldMap& map);

/*
 * Whether the velocity was measured after a clutter filter, where clutter no longer stands still:
 * so it is when the reflectivity that was chosen is the one before the filter, another one differs
 * from it, and the velocity's name does not say otherwise. Never for a velocity that the user
 * mapped.
 */
bool isVelocityFiltered(const Sweep& sweep, const FieldChoice& choice, const FieldMap& map);

std::string lowerCase(std::string text);

}  // namespace cli

#endif
