/* find_field.cpp - exact names first, then names in another case. */
#include "scan/fields/find_field.h"

#include <stdexcept>

#include "scan/text.h"

namespace scan {

std::size_t findName(const std::vector<std::string>& names, const std::string& name) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            return i;
        }
    }
    std::string all;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (lowerCase(names[i]) == lowerCase(name)) {
            return i;
        }
        all += " " + names[i];
    }
    throw std::runtime_error("has no field " + name + " among:" + all);
}

const Field& findField(const Sweep& sweep, const std::string& name) {
    std::vector<std::string> names;
    for (const Field& field : sweep.fields) {
        names.push_back(field.name);
    }
    return sweep.fields[findName(names, name)];
}

}  // namespace scan
