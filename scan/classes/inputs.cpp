/* inputs.cpp - the library's table of inputs, joined with the roles of fields. */
#include "scan/classes/inputs.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "scan/text.h"

namespace scan {
namespace {

Role roleOfKey(const std::string& key) {
    for (int i = 0; i < kRoleCount; ++i) {
        if (key == roleInfo(static_cast<Role>(i)).key) {
            return static_cast<Role>(i);
        }
    }
    return Role::kNone;
}

std::vector<Input> readTable() {
    std::vector<Input> table;
    const clutter_input_info* info = nullptr;
    for (int i = 0; clutter_get_input(i, &info) == CLUTTER_OK; ++i) {
        table.push_back({info, roleOfKey(info->field)});
    }
    return table;
}

/* "phidp-texture" is another name of "pdp-texture", "rhohv" of "rhv". */
std::string withShortName(std::string name) {
    for (const auto& [longName, shortName] : {std::pair{"phidp", "pdp"}, {"rhohv", "rhv"}}) {
        if (name.rfind(longName, 0) == 0) {
            name.replace(0, std::string(longName).size(), shortName);
        }
    }
    return name;
}

int bitsOf(const std::string& given) {
    const std::string name = withShortName(given);
    if (name == "all") {
        return kAllInputs;
    }
    if (name == "textures") {
        return CLUTTER_TEXTURES;
    }
    std::string names;
    for (const Input& input : inputs()) {
        if (name == input.info->name) {
            return input.bit();
        }
        names += std::string(input.info->name) + " ";
    }
    throw std::invalid_argument("no such input: " + name + " (" + names + "textures all)");
}

}  // namespace

const std::vector<Input>& inputs() {
    static const std::vector<Input> table = readTable();
    return table;
}

bool takesPart(Role role, int mask) {
    return role == Role::kZhh ||
           std::any_of(inputs().begin(), inputs().end(), [&](const Input& input) {
               return input.role == role && (mask & input.bit()) != 0;
           });
}

int parseInputs(const std::string& text) {
    int mask = 0;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        mask |= bitsOf(lowerCase(text.substr(begin, end - begin)));
        begin = end + 1;
    }
    return mask;
}

std::string describeInputs(int mask) {
    std::string textures;
    std::string values;
    for (const Input& input : inputs()) {
        if ((mask & input.bit()) == 0) {
            continue;
        }
        std::string& list = input.info->texture ? textures : values;
        list += std::string(list.empty() ? "" : " ") + roleInfo(input.role).key;
    }
    if (textures.empty()) {
        return values;
    }
    return "textures of " + textures + (values.empty() ? "" : "; " + values);
}

}  // namespace scan
