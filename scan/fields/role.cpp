/* role.cpp - the table of roles and the table of names. */
#include "scan/fields/role.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "scan/text.h"

namespace scan {
namespace {

constexpr RoleInfo kRoles[] = {
    {"zhh", "horizontal reflectivity", "dBZ", -80, 100},
    {"zdr", "differential reflectivity", "dB", -12, 15},
    {"pdp", "differential phase", "deg", -360, 720},
    {"rhv", "co-polar correlation", "", 0, 1.1f},
    {"vel", "Doppler velocity", "m/s", -150, 150},
    {"wid", "spectrum width", "m/s", 0, 50},
    {"ldr", "linear depolarisation ratio", "dB", -60, 20},
    {"pdf", "clutter likelihood", "", 0, 1},
    {"kdp", "specific differential phase", "deg/km", -60, 100},
    {"snr", "signal-to-noise ratio", "dB", -100, 150},
    {"-", "", "", -INFINITY, INFINITY},
};
static_assert(std::size(kRoles) == kRoleCount + 1);

struct KnownName {
    const char* name;  // lower case
    Role role;
    bool unfiltered = false;  // measured before the clutter filter
};

/* Within a role the first is preferred: before the clutter filter, then after it. */
constexpr KnownName kKnownNames[] = {
    {"zt", Role::kZhh, true},
    {"dbth", Role::kZhh, true},
    {"th", Role::kZhh, true},
    {"tz", Role::kZhh, true},
    {"uz", Role::kZhh, true},
    {"total_power", Role::kZhh, true},
    {"dz", Role::kZhh},
    {"zh", Role::kZhh},
    {"dbzh", Role::kZhh},
    {"dbz", Role::kZhh},
    {"z", Role::kZhh},
    {"reflectivity", Role::kZhh},
    {"reflectivity_horizontal", Role::kZhh},
    {"cz", Role::kZhh},
    {"corrected_reflectivity", Role::kZhh},
    {"zv", Role::kZhh},
    {"uzdr", Role::kZdr},
    {"zd", Role::kZdr},
    {"zdr", Role::kZdr},
    {"dr", Role::kZdr},
    {"differential_reflectivity", Role::kZdr},
    {"uphidp", Role::kPdp},
    {"ph", Role::kPdp},
    {"dp", Role::kPdp},
    {"phidp", Role::kPdp},
    {"pdp", Role::kPdp},
    {"uncorrected_differential_phase", Role::kPdp},
    {"differential_phase", Role::kPdp},
    {"corrected_differential_phase", Role::kPdp},
    {"urhohv", Role::kRhv},
    {"rh", Role::kRhv},
    {"rhohv", Role::kRhv},
    {"rhv", Role::kRhv},
    {"uncorrected_cross_correlation_ratio", Role::kRhv},
    {"cross_correlation_ratio", Role::kRhv},
    {"vt", Role::kVel, true},
    {"vr", Role::kVel},
    {"ve", Role::kVel},
    {"v", Role::kVel},
    {"vradh", Role::kVel},
    {"vrad", Role::kVel},
    {"vraddh", Role::kVel},
    {"vel", Role::kVel},
    {"velocity", Role::kVel},
    {"sw", Role::kWid},
    {"w", Role::kWid},
    {"wradh", Role::kWid},
    {"wrad", Role::kWid},
    {"width", Role::kWid},
    {"wid", Role::kWid},
    {"spectrum_width", Role::kWid},
    {"ld", Role::kLdr},
    {"lh", Role::kLdr},
    {"lr", Role::kLdr},
    {"ldr", Role::kLdr},
    {"ldrh", Role::kLdr},
    {"linear_depolarization_ratio", Role::kLdr},
    {"lv", Role::kLdr},
    {"cmap", Role::kPdf},
    {"clutter_likelihood", Role::kPdf},
    {"pdf", Role::kPdf},
    {"kd", Role::kKdp},
    {"kdp", Role::kKdp},
    {"specific_differential_phase", Role::kKdp},
    {"snrh", Role::kSnr},
    {"snr", Role::kSnr},
    {"sn", Role::kSnr},
    {"signal_noise_ratio_h", Role::kSnr},
    {"signal_noise_ratio", Role::kSnr},
    {"signal_to_noise_ratio", Role::kSnr},
    {"snrhc", Role::kSnr},
    {"snr_h", Role::kSnr},
};

}  // namespace

const RoleInfo& roleInfo(Role role) {
    return kRoles[static_cast<int>(role)];
}

int rankOfName(const std::string& name) {
    const std::string lower = lowerCase(name);
    const auto* found = std::find_if(std::begin(kKnownNames), std::end(kKnownNames),
                                     [&](const KnownName& known) { return lower == known.name; });
    return found == std::end(kKnownNames) ? -1 : static_cast<int>(found - kKnownNames);
}

Role roleOfName(const std::string& name) {
    const int rank = rankOfName(name);
    return rank < 0 ? Role::kNone : kKnownNames[rank].role;
}

std::vector<std::string> knownNames(Role role) {
    std::vector<std::string> names;
    for (const KnownName& known : kKnownNames) {
        if (known.role == role) {
            names.push_back(known.name);
        }
    }
    return names;
}

bool isUnfilteredName(const std::string& name) {
    const int rank = rankOfName(name);
    return rank >= 0 && kKnownNames[rank].unfiltered;
}

}  // namespace scan
