#include "selection.h"

#include <stdexcept>

#include "roles.h"

namespace cli {

using namespace scan;

const Sweep& findSweep(const Scan& scan, std::optional<int> number) {
    if (scan.sweeps.empty()) throw std::runtime_error("holds no sweep");
    if (!number) return scan.sweeps.front();
    for (const Sweep& sweep : scan.sweeps) {
        if (sweep.number == *number) return sweep;
    }
    throw std::runtime_error("has no sweep " + std::to_string(*number));
}

size_t findName(const std::vector<std::string>& names, const std::string& name) {
    for (size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) return i;
    }
    std::string all;
    for (size_t i = 0; i < names.size(); ++i) {
        if (lowerCase(names[i]) == lowerCase(name)) return i;
        all += " " + names[i];
    }
    throw std::runtime_error("has no field " + name + " among:" + all);
}

const Field& findField(const Sweep& sweep, const std::string& name) {
    std::vector<std::string> names;
    for (const Field& field : sweep.fields) names.push_back(field.name);
    return sweep.fields[findName(names, name)];
}

}  // namespace cli
