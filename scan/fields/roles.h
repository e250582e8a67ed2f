/*
 * roles.h - which field of a file plays which part: names of many systems, their units and ranges.
 */
#ifndef SCAN_FIELDS_ROLES_H
#define SCAN_FIELDS_ROLES_H

#include <map>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace scan {

/* The codes of a field of classes. */
constexpr float kPrecipitation = 0;
constexpr float kNoise = 3;
constexpr float kGroundClutter = 5;
constexpr float kSeaClutter = 6; /* these two only where all classes are asked for */
constexpr float kTurbineClutter = 7;
constexpr float kClassCodes[] = {kPrecipitation, kNoise, kGroundClutter, kSeaClutter,
                                 kTurbineClutter};

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
 * std::invalid_argument, also for a field or a role that comes twice. */
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
 * role. Throws std::runtime_error when map names a field that the sweep does not have, or one field
 * in two spellings.
 */
FieldChoice chooseFields(const Sweep& sweep, const FieldMap& map);

/*
 * Whether the velocity was measured after a clutter filter, where clutter no longer stands still:
 * so it is when the reflectivity that was chosen is the one before the filter, another one differs
 * from it, and the velocity's name does not say otherwise. Never for a velocity that the user
 * mapped.
 */
bool isVelocityFiltered(const Sweep& sweep, const FieldChoice& choice, const FieldMap& map);

/*
 * A field of class codes: named "CCl" or "CC", with class codes or NaN and at least one class.
 * (Elsewhere "CC" also names a correlation coefficient.)
 */
bool isClassField(const Field& field);

std::string lowerCase(std::string text);

/* Files may hold any bytes: what is not printable becomes '?', blanks at the end go. */
std::string printable(const std::string& text);

}  // namespace scan

#endif
