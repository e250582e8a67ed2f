/* hdf5_group.cpp - groups and planes of ODIM_H5 files, read through the page. */
#include "scan/formats/hdf5/hdf5_group.h"

#include <cstdlib>
#include <stdexcept>

#include "containers/tree.h"
#include "scan/formats/hdf5/hdf5_plane.h"

namespace scan::hdf5 {

namespace tree = studio::tree;

std::vector<double> numbersIn(const std::string& text) {
    std::vector<double> values;
    for (const char* at = text.c_str(); *at != '\0';) {
        char* end = nullptr;
        const double value = std::strtod(at, &end);
        if (end != at) {
            values.push_back(value);
        }
        at = end == at ? at + 1 : end;
    }
    return values;
}

std::vector<std::string> Group::children() const {
    return tree::children(path_);
}

bool Group::holds(const std::string& name) const {
    return tree::kindOf(pathOf(name)) != tree::Kind::kNone;
}

std::optional<Group> Group::find(const std::string& name) const {
    if (tree::kindOf(pathOf(name)) != tree::Kind::kGroup) {
        return std::nullopt;
    }
    return Group(Handle(), pathOf(name));
}

bool Group::has(const std::string& attribute) const {
    return tree::attribute(path_, attribute).has_value();
}

std::optional<double> Group::number(const std::string& attribute) const {
    const std::vector<double> values = numbers(attribute);
    return values.empty() ? std::nullopt : std::optional(values.front());
}

std::vector<double> Group::numbers(const std::string& attribute) const {
    const std::optional<tree::Attribute> found = tree::attribute(path_, attribute);
    if (!found) {
        return {};
    }
    return found->isText ? numbersIn(found->text) : found->numbers;
}

std::optional<std::string> Group::text(const std::string& attribute) const {
    const std::optional<tree::Attribute> found = tree::attribute(path_, attribute);
    return found && found->isText ? std::optional(found->text) : std::nullopt;
}

Group openFile(const std::string&) {
    return Group(Handle(), "");
}

Plane readPlane(const Group& group, const std::string& name, const Packing& packing,
                ValueBudget& budget) {
    const std::string path = group.pathOf(name);
    if (tree::kindOf(path) != tree::Kind::kData) {
        throw std::runtime_error(path + " is missing");
    }
    const tree::Data data = tree::describe(path);
    if (data.shape.size() != 2) {
        throw std::runtime_error(path + " does not have two dimensions");
    }
    if (data.type == tree::Data::Type::kOther || data.type == tree::Data::Type::kText) {
        throw std::runtime_error(path + " does not hold numbers");
    }
    if (data.shape[0] == 0 || data.shape[1] == 0) {
        throw std::runtime_error(path + " is empty");
    }
    budget.take(data.shape[0], data.shape[1], path);
    Plane plane;
    plane.rows = static_cast<int>(data.shape[0]);
    plane.columns = static_cast<int>(data.shape[1]);
    const Decoder decode(packing);
    for (const double raw : tree::numbers(path)) {
        plane.values.push_back(decode(raw));
    }
    if (plane.values.size() != data.shape[0] * data.shape[1]) {
        throw std::runtime_error(path + " cannot be read: the file is damaged");
    }
    return plane;
}

}  // namespace scan::hdf5
