#include "scan/fields/roles.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <set>
#include <stdexcept>

namespace scan {
namespace {

constexpr double kLeastShareInRange = 0.9;

constexpr RoleInfo kRoles[kRoleCount + 1] = {
    {"zhh", "horizontal reflectivity", "dBZ", -80, 100},
    {"zdr", "differential reflectivity", "dB", -12, 15},
    {"pdp", "differential phase", "deg", -360, 720},
    {"rhv", "co-polar correlation", "", 0, 1.1F},
    {"vel", "Doppler velocity", "m/s", -150, 150},
    {"wid", "spectrum width", "m/s", 0, 50},
    {"ldr", "linear depolarisation ratio", "dB", -60, 20},
    {"pdf", "clutter likelihood", "", 0, 1},
    {"kdp", "specific differential phase", "deg/km", -60, 100},
    {"-", "", "", -INFINITY, INFINITY},
};

struct KnownName {
    const char* name; /* lower case */
    Role role;
};

/* Within a role the first is preferred: before the clutter filter, then after it. */
constexpr KnownName kKnownNames[] = {
    {"zt", Role::kZhh},
    {"dbth", Role::kZhh},
    {"th", Role::kZhh},
    {"tz", Role::kZhh},
    {"uz", Role::kZhh},
    {"total_power", Role::kZhh},
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
    {"vt", Role::kVel},
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
    {"pdf", Role::kPdf},
    {"kd", Role::kKdp},
    {"kdp", Role::kKdp},
    {"specific_differential_phase", Role::kKdp},
};

/* Names that say: before the clutter filter. */
constexpr const char* kUnfilteredNames[] = {"zt", "dbth", "th", "tz", "uz", "total_power", "vt"};
constexpr double kFilterShare = 0.01; /* of the gates are changed by a filter, at least */

bool isUnfilteredName(const std::string& name) {
    const std::string lower = lowerCase(name);
    return std::any_of(std::begin(kUnfilteredNames), std::end(kUnfilteredNames),
                       [&](const char* known) { return lower == known; });
}

/* Share of gates where two fields differ, a missing value being one too. */
double shareDifferent(const Field& a, const Field& b) {
    size_t different = 0;
    for (size_t i = 0; i < a.values.size(); ++i)
        different +=
            a.values[i] != b.values[i] && !(std::isnan(a.values[i]) && std::isnan(b.values[i]));
    return static_cast<double>(different) / static_cast<double>(a.values.size());
}

/* Position in the table of known names; -1 unknown. */
int rankOfName(const std::string& name) {
    const std::string lower = lowerCase(name);
    const auto* found = std::find_if(std::begin(kKnownNames), std::end(kKnownNames),
                                     [&](const KnownName& known) { return lower == known.name; });
    return found == std::end(kKnownNames) ? -1 : static_cast<int>(found - kKnownNames);
}

/* A key ("pdp") first, then a known name ("PhiDP"). */
Role parseRole(const std::string& text) {
    const std::string lower = lowerCase(text);
    for (int i = 0; i < kRoleCount; ++i)
        if (lower == kRoles[i].key) return static_cast<Role>(i);
    if (lower == "none") return Role::kNone;
    const Role known = roleOfName(text);
    if (known == Role::kNone) {
        throw std::invalid_argument("no such quantity: " + text +
                                    " (zhh zdr pdp rhv vel wid ldr pdf kdp none)");
    }
    return known;
}

const Field* findField(const Sweep& sweep, const std::string& name) {
    for (const Field& field : sweep.fields)
        if (field.name == name) return &field;
    for (const Field& field : sweep.fields)
        if (lowerCase(field.name) == lowerCase(name)) return &field;
    return nullptr;
}

std::string rangeNote(const Field& field, Role role, const ValueSummary& summary) {
    const RoleInfo& info = roleInfo(role);
    char text[200];
    std::snprintf(text, sizeof text, "%.0f %% of the values of %s lie outside %g..%g %s",
                  100 * (1 - summary.shareInRange), field.name.c_str(), info.lowest, info.highest,
                  info.units);
    std::string note = text;
    while (!note.empty() && note.back() == ' ') note.pop_back();
    return note;
}

/* The fields whose names stand for role, the preferred first. */
std::vector<const Field*> candidates(const Sweep& sweep, const FieldMap& map, Role role) {
    std::vector<const Field*> found;
    for (const Field& field : sweep.fields) {
        const bool mapped = std::any_of(map.begin(), map.end(), [&](const auto& entry) {
            return findField(sweep, entry.first) == &field;
        });
        if (!mapped && roleOfName(field.name) == role) found.push_back(&field);
    }
    std::stable_sort(found.begin(), found.end(), [](const Field* a, const Field* b) {
        return rankOfName(a->name) < rankOfName(b->name);
    });
    return found;
}

/* Why a field says nothing; empty when it says something. */
std::string emptinessNote(const Field& field, const ValueSummary& summary) {
    if (summary.count == 0) return field.name + " is left out: it holds no value";
    if (summary.constant()) return field.name + " is left out: it is the same value everywhere";
    return "";
}

const Field* chooseByName(const Sweep& sweep, const FieldMap& map, Role role, std::string& note) {
    const Field* unlikely = nullptr;
    std::string unlikelyNote;
    for (const Field* field : candidates(sweep, map, role)) {
        const ValueSummary summary = summarise(field->values, role);
        const std::string emptiness = emptinessNote(*field, summary);
        if (!emptiness.empty()) {
            note += (note.empty() ? "" : "; ") + emptiness;
            continue;
        }
        if (summary.shareInRange >= kLeastShareInRange) {
            if (unlikely) note = unlikelyNote + ": " + field->name + " is taken instead";
            return field;
        }
        if (unlikely) continue;
        unlikely = field;
        unlikelyNote = rangeNote(*field, role, summary);
    }
    if (unlikely) note = unlikelyNote + ": is it really the " + roleInfo(role).text + "?";
    return unlikely;
}

/* Which of two would count, nobody could tell. */
void addToMap(FieldMap& map, const std::string& field, Role role) {
    const auto taken = std::find_if(map.begin(), map.end(), [&](const auto& entry) {
        return entry.second == role && entry.first != field;
    });
    if (role != Role::kNone && taken != map.end())
        throw std::invalid_argument(taken->first + " and " + field + " are both mapped to " +
                                    roleInfo(role).key);
    if (!map.emplace(field, role).second) throw std::invalid_argument(field + " is mapped twice");
}

}  // namespace

std::string lowerCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

const RoleInfo& roleInfo(Role role) {
    return kRoles[static_cast<int>(role)];
}

Role roleOfName(const std::string& name) {
    const int rank = rankOfName(name);
    return rank < 0 ? Role::kNone : kKnownNames[rank].role;
}

FieldMap parseFieldMap(const std::string& text) {
    FieldMap map;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find(',', begin), text.size());
        const std::string entry = text.substr(begin, end - begin);
        const size_t equals = entry.find('=');
        if (equals == 0 || equals == std::string::npos)
            throw std::invalid_argument("expected FIELD=QUANTITY, got: " + entry);
        addToMap(map, entry.substr(0, equals), parseRole(entry.substr(equals + 1)));
        begin = end + 1;
    }
    return map;
}

ValueSummary summarise(const std::vector<float>& values, Role role) {
    std::vector<float> present;
    present.reserve(values.size());
    std::copy_if(values.begin(), values.end(), std::back_inserter(present),
                 [](float value) { return std::isfinite(value); });
    ValueSummary summary;
    summary.count = static_cast<long>(present.size());
    if (present.empty()) return summary;
    const auto ends = std::minmax_element(present.begin(), present.end());
    summary.lowest = *ends.first;
    summary.highest = *ends.second;
    const RoleInfo& info = roleInfo(role);
    const auto inside = std::count_if(present.begin(), present.end(), [&](float value) {
        return value >= info.lowest && value <= info.highest;
    });
    summary.shareInRange = static_cast<double>(inside) / static_cast<double>(present.size());
    const auto middle = present.begin() + static_cast<std::ptrdiff_t>(present.size() / 2);
    std::nth_element(present.begin(), middle, present.end());
    summary.median = *middle;
    return summary;
}

FieldChoice chooseFields(const Sweep& sweep, const FieldMap& map) {
    FieldChoice choice;
    std::set<const Field*> mapped;
    for (const auto& [name, role] : map) {
        const Field* field = findField(sweep, name);
        if (!field) throw std::runtime_error("no field named " + name);
        if (!mapped.insert(field).second)
            throw std::runtime_error(field->name + " is mapped twice");
        if (role != Role::kNone) choice.fields[static_cast<int>(role)] = field;
    }
    for (int i = 0; i < kRoleCount; ++i) {
        if (!choice.fields[i])
            choice.fields[i] = chooseByName(sweep, map, static_cast<Role>(i), choice.notes[i]);
    }
    return choice;
}

bool isVelocityFiltered(const Sweep& sweep, const FieldChoice& choice, const FieldMap& map) {
    const Field* velocity = choice[Role::kVel];
    const Field* reflectivity = choice[Role::kZhh];
    if (!velocity || isUnfilteredName(velocity->name)) return false;
    if (!reflectivity || !isUnfilteredName(reflectivity->name)) return false;
    for (const auto& [name, role] : map)
        if (role == Role::kVel) return false;
    return std::any_of(sweep.fields.begin(), sweep.fields.end(), [&](const Field& other) {
        if (roleOfName(other.name) != Role::kZhh || isUnfilteredName(other.name)) return false;
        const ValueSummary summary = summarise(other.values, Role::kZhh);
        return summary.count > 0 && !summary.constant() &&
               shareDifferent(*reflectivity, other) >= kFilterShare;
    });
}

bool isClassField(const Field& field) {
    if (field.name != "CCl" && field.name != "CC") return false;
    bool any = false;
    for (const float value : field.values) {
        if (std::isnan(value)) continue;
        if (std::find(std::begin(kClassCodes), std::end(kClassCodes), value) ==
            std::end(kClassCodes))
            return false;
        any = true;
    }
    return any;
}

std::string printable(const std::string& text) {
    std::string result;
    for (const char c : text) result += c >= 0x20 && c < 0x7f ? c : '?';
    const auto end = result.find_last_not_of(' ');
    return end == std::string::npos ? "" : result.substr(0, end + 1);
}

}  // namespace scan
