/* field_map.cpp - parses maps of fields. */
#include "scan/fields/field_map.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include "scan/text.h"

namespace scan {
namespace {

/* A key ("pdp") first, then a known name ("PhiDP"). */
Role parseRole(const std::string& text) {
    const std::string lower = lowerCase(text);
    for (int i = 0; i < kRoleCount; ++i) {
        if (lower == roleInfo(static_cast<Role>(i)).key) {
            return static_cast<Role>(i);
        }
    }
    if (lower == "none") {
        return Role::kNone;
    }
    const Role known = roleOfName(text);
    if (known == Role::kNone) {
        throw std::invalid_argument("no such role: " + text +
                                    " (zhh zdr pdp rhv vel wid ldr pdf kdp none)");
    }
    return known;
}

/* Two fields for one role would be ambiguous. */
void addToMap(FieldMap& map, const std::string& field, Role role) {
    const auto taken = std::find_if(map.begin(), map.end(), [&](const auto& entry) {
        return entry.second == role && entry.first != field;
    });
    if (role != Role::kNone && taken != map.end()) {
        throw std::invalid_argument(taken->first + " and " + field + " are both mapped to " +
                                    roleInfo(role).key);
    }
    if (!map.emplace(field, role).second) {
        throw std::invalid_argument(field + " is mapped twice");
    }
}

}  // namespace

FieldMap parseFieldMap(const std::string& text) {
    FieldMap map;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        const std::string entry = text.substr(begin, end - begin);
        const std::size_t equals = entry.find('=');
        if (equals == 0 || equals == std::string::npos) {
            throw std::invalid_argument("expected FIELD=ROLE, got: " + entry);
        }
        addToMap(map, entry.substr(0, equals), parseRole(entry.substr(equals + 1)));
        begin = end + 1;
    }
    return map;
}

}  // namespace scan
