/* selection.cpp - finds sweeps by number and fields by name. */
#include "options/selection.h"

#include <stdexcept>

#include "scan/fields/field_choice.h"
#include "scan/fields/find_field.h"
#include "scan/fields/role.h"

namespace cli {

using scan::chooseFields;
using scan::Field;
using scan::findField;
using scan::Role;
using scan::Scan;
using scan::Sweep;

std::vector<const Sweep*> findSweeps(const Scan& scan, std::optional<int> number) {
    std::vector<const Sweep*> found;
    for (const Sweep& sweep : scan.sweeps) {
        if (!number || sweep.number == *number) {
            found.push_back(&sweep);
        }
    }
    if (found.empty()) {
        throw std::runtime_error(number ? "has no sweep number " + std::to_string(*number)
                                        : "holds no sweep");
    }
    return found;
}

const Sweep& findSweep(const Scan& scan, std::optional<int> number) {
    return *findSweeps(scan, number).front();
}

const Sweep& findOnlySweep(const Scan& scan, std::optional<int> number) {
    const std::vector<const Sweep*> found = findSweeps(scan, number);
    if (found.size() > 1) {
        throw std::runtime_error("holds " + std::to_string(found.size()) +
                                 " sweeps, but this format stores one: choose with --sweep");
    }
    return *found.front();
}

const Field& chooseField(const Sweep& sweep, const std::string& name) {
    if (!name.empty()) {
        return findField(sweep, name);
    }
    if (sweep.fields.empty()) {
        throw std::runtime_error("holds no field");
    }
    const Field* reflectivity = chooseFields(sweep, {})[Role::kZhh];
    return reflectivity != nullptr ? *reflectivity : sweep.fields.front();
}

}  // namespace cli
