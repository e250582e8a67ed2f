/* selection.cpp - finds sweeps by number and fields by name. */
#include "options/selection.h"

#include <stdexcept>

#include "scan/fields/field_choice.h"
#include "scan/fields/find_field.h"
#include "scan/fields/role.h"

namespace cli {

std::vector<const scan::Sweep*> findSweeps(const scan::Scan& scan, std::optional<int> number) {
    std::vector<const scan::Sweep*> found;
    for (const scan::Sweep& sweep : scan.sweeps) {
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

const scan::Sweep& findSweep(const scan::Scan& scan, std::optional<int> number) {
    return *findSweeps(scan, number).front();
}

const scan::Sweep& findOnlySweep(const scan::Scan& scan, std::optional<int> number) {
    const std::vector<const scan::Sweep*> found = findSweeps(scan, number);
    if (found.size() > 1) {
        throw std::runtime_error("holds " + std::to_string(found.size()) +
                                 " sweeps, but this format stores one: choose with --sweep");
    }
    return *found.front();
}

const scan::Field& chooseField(const scan::Sweep& sweep, const std::string& name) {
    if (!name.empty()) {
        return scan::findField(sweep, name);
    }
    if (sweep.fields.empty()) {
        throw std::runtime_error("holds no field");
    }
    const scan::Field* reflectivity = scan::chooseFields(sweep, {})[scan::Role::kZhh];
    return reflectivity != nullptr ? *reflectivity : sweep.fields.front();
}

}  // namespace cli
