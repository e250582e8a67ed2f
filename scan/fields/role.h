/* role.h - the quantities that fields hold: names of many systems, their units and ranges. */
#ifndef SCAN_FIELDS_ROLE_H
#define SCAN_FIELDS_ROLE_H

#include <string>
#include <vector>

namespace scan {

enum class Role { kZhh, kZdr, kPdp, kRhv, kVel, kWid, kLdr, kPdf, kKdp, kSnr, kNone };
constexpr int kRoleCount = static_cast<int>(Role::kNone);

struct RoleInfo {
    const char* key;    // as options and reports name it: "zhh"
    const char* text;   // "horizontal reflectivity"
    const char* units;  // "dBZ"
    float lowest;       // values beyond these ends cannot be the quantity
    float highest;
};
const RoleInfo& roleInfo(Role role);

/* The role of a field by its name, whatever its case; kNone when the name is not known. */
Role roleOfName(const std::string& name);

/* Names of fields of a role, in lower case, the preferred first: before the clutter filter, then
 * after it. */
std::vector<std::string> knownNames(Role role);

/* The preference of a name among those of its role, smaller is better; -1 when it is not known. */
int rankOfName(const std::string& name);

/* Whether a name says that the field was measured before the clutter filter. */
bool isUnfilteredName(const std::string& name);

}  // namespace scan

#endif
