/* field_choice.cpp - candidates by name, judged by their values. */
#include "scan/fields/field_choice.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <vector>

#include "scan/fields/value_summary.h"
#include "scan/text.h"

namespace scan {
namespace {

constexpr double kMinShareInRange = 0.9;

/* Share of gates where two fields differ, where a missing value is one too. */
double shareDifferent(const Field& a, const Field& b) {
    std::size_t different = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        different +=
            a.values[i] != b.values[i] && !(std::isnan(a.values[i]) && std::isnan(b.values[i]));
    }
    return static_cast<double>(different) / static_cast<double>(a.values.size());
}

const Field* findField(const Sweep& sweep, const std::string& name) {
    for (const Field& field : sweep.fields) {
        if (field.name == name) {
            return &field;
        }
    }
    for (const Field& field : sweep.fields) {
        if (lowerCase(field.name) == lowerCase(name)) {
            return &field;
        }
    }
    return nullptr;
}

std::string rangeNote(const Field& field, Role role, const ValueSummary& summary) {
    const RoleInfo& info = roleInfo(role);
    char text[200];
    std::snprintf(text, sizeof text, "%.0f %% of the values of %s lie outside %g..%g %s",
                  100 * (1 - summary.shareInRange), field.name.c_str(), info.lowest, info.highest,
                  info.units);
    std::string note = text;
    while (!note.empty() && note.back() == ' ') {
        note.pop_back();
    }
    return note;
}

/* The fields whose names are those of a role, the preferred first. */
std::vector<const Field*> candidates(const Sweep& sweep, const FieldMap& map, Role role) {
    std::vector<const Field*> found;
    for (const Field& field : sweep.fields) {
        const bool mapped = std::any_of(map.begin(), map.end(), [&](const auto& entry) {
            return findField(sweep, entry.first) == &field;
        });
        if (!mapped && roleOfName(field.name) == role) {
            found.push_back(&field);
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const Field* a, const Field* b) {
        return rankOfName(a->name) < rankOfName(b->name);
    });
    return found;
}

/* Why a field carries no information; empty if it does. */
std::string emptinessNote(const Field& field, const ValueSummary& summary) {
    if (summary.count == 0) {
        return field.name + " is left out: it holds no value";
    }
    if (summary.constant()) {
        return field.name + " is left out: it is the same value everywhere";
    }
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
        if (summary.shareInRange >= kMinShareInRange) {
            if (unlikely) {
                note = unlikelyNote + ": " + field->name + " is taken instead";
            }
            return field;
        }
        if (unlikely) {
            continue;
        }
        unlikely = field;
        unlikelyNote = rangeNote(*field, role, summary);
    }
    if (unlikely) {
        note = unlikelyNote + ": is it really the " + roleInfo(role).text + "?";
    }
    return unlikely;
}

}  // namespace

FieldChoice chooseFields(const Sweep& sweep, const FieldMap& map) {
    FieldChoice choice;
    std::set<const Field*> mapped;
    for (const auto& [name, role] : map) {
        const Field* field = findField(sweep, name);
        if (!field) {
            throw std::runtime_error("no field named " + name);
        }
        if (!mapped.insert(field).second) {
            throw std::runtime_error(field->name + " is mapped twice");
        }
        if (role != Role::kNone) {
            choice.fields[static_cast<int>(role)] = field;
        }
    }
    for (int i = 0; i < kRoleCount; ++i) {
        if (!choice.fields[i]) {
            choice.fields[i] = chooseByName(sweep, map, static_cast<Role>(i), choice.notes[i]);
        }
    }
    return choice;
}

bool isVelocityFiltered(const Sweep& sweep, const FieldChoice& choice, const FieldMap& map) {
    const Field* velocity = choice[Role::kVel];
    const Field* reflectivity = choice[Role::kZhh];
    if (!velocity || isUnfilteredName(velocity->name)) {
        return false;
    }
    if (!reflectivity || !isUnfilteredName(reflectivity->name)) {
        return false;
    }
    for (const auto& [name, role] : map) {
        if (role == Role::kVel) {
            return false;
        }
    }
    return std::any_of(sweep.fields.begin(), sweep.fields.end(), [&](const Field& other) {
        if (roleOfName(other.name) != Role::kZhh || isUnfilteredName(other.name)) {
            return false;
        }
        const ValueSummary summary = summarise(other.values, Role::kZhh);
        return summary.count > 0 && !summary.constant() &&
               shareDifferent(*reflectivity, other) >= kFilterShare;
    });
}

}  // namespace scan
