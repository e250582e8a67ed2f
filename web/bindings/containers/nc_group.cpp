/*
 * nc_group.cpp - variables and attributes of NetCDF-4 files, read through the page. In HDF5 a
 * variable is data, and a dimension is a scale that data name.
 */
#include "scan/formats/netcdf/nc_group.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "containers/tree.h"

namespace scan::netcdf {

namespace tree = studio::tree;

namespace {

/* Paths of the groups that were met; a group's id is its place here. */
std::vector<std::string>& paths() {
    static std::vector<std::string> all;
    return all;
}

int idOf(const std::string& path) {
    paths().push_back(path);
    return static_cast<int>(paths().size()) - 1;
}

std::string below(int id, const std::string& name) {
    const std::string& path = paths()[static_cast<std::size_t>(id)];
    return path.empty() ? name : path + "/" + name;
}

int typeOf(const tree::Data& data) {
    using Type = tree::Data::Type;
    if (data.type == Type::kText || data.type == Type::kOther) {
        return kChar;
    }
    if (data.type == Type::kFloat) {
        return data.bytes <= 4 ? kFloat : kDouble;
    }
    if (data.bytes == 1) {
        return kByte;
    }
    if (data.bytes == 2) {
        return data.type == Type::kUnsigned ? kUnsignedShort : kShort;
    }
    return data.bytes == 4 && data.type == Type::kSigned ? kInt : kDouble;
}

std::string lastOf(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/* Data that only mark a dimension are not variables. */
bool isOnlyDimension(const tree::Data& data) {
    return data.scale.rfind("This is a netCDF dimension but not a netCDF variable", 0) == 0;
}

}  // namespace

OpenFile::~OpenFile() {
    paths().clear();
}

std::vector<Group> Group::groups() const {
    std::vector<Group> result;
    for (const std::string& name : tree::children(paths()[static_cast<std::size_t>(id_)])) {
        if (std::optional<Group> group = find(name)) {
            result.push_back(std::move(*group));
        }
    }
    return result;
}

std::optional<Group> Group::find(const std::string& name) const {
    const std::string path = below(id_, name);
    if (tree::kindOf(path) != tree::Kind::kGroup) {
        return std::nullopt;
    }
    return Group(file_, idOf(path), name);
}

std::vector<Variable> Group::variables() const {
    std::vector<Variable> result;
    for (const std::string& name : tree::children(paths()[static_cast<std::size_t>(id_)])) {
        if (std::optional<Variable> found = variable(name)) {
            result.push_back(std::move(*found));
        }
    }
    return result;
}

std::optional<Variable> Group::variable(const std::string& name) const {
    const std::string path = below(id_, name);
    if (tree::kindOf(path) != tree::Kind::kData) {
        return std::nullopt;
    }
    const tree::Data data = tree::describe(path);
    if (isOnlyDimension(data)) {
        return std::nullopt;
    }
    Variable found;
    found.id = idOf(path);
    found.name = name;
    found.type = typeOf(data);
    found.shape = data.shape;
    for (std::size_t i = 0; i < data.shape.size(); ++i) {
        const bool itself = data.shape.size() == 1 && !data.scale.empty();
        const std::string scale = i < data.dimensions.size() ? data.dimensions[i] : "";
        found.dimensions.push_back(itself ? name : lastOf(scale));
    }
    return found;
}

std::optional<double> Group::number(const std::string& attribute, const Variable* variable) const {
    const std::string& path = paths()[static_cast<std::size_t>(variable ? variable->id : id_)];
    const std::optional<tree::Attribute> found = tree::attribute(path, attribute);
    if (!found) {
        return std::nullopt;
    }
    if (!found->isText) {
        return found->numbers.empty() ? std::nullopt : std::optional(found->numbers.front());
    }
    char* end = nullptr;
    const double value = std::strtod(found->text.c_str(), &end);
    return end == found->text.c_str() ? std::nullopt : std::optional(value);
}

std::string Group::text(const std::string& attribute, const Variable* variable) const {
    const std::string& path = paths()[static_cast<std::size_t>(variable ? variable->id : id_)];
    const std::optional<tree::Attribute> found = tree::attribute(path, attribute);
    return found && found->isText ? found->text : "";
}

std::vector<double> Group::rawNumbers(const Variable& variable) const {
    return tree::numbers(paths()[static_cast<std::size_t>(variable.id)]);
}

std::vector<std::string> Group::texts(const std::string& name, ValueBudget& budget) const {
    const std::optional<Variable> found = variable(name);
    if (!found || isNumeric(*found) || found->count() == 0) {
        return {};
    }
    budget.take(found->count(), 1, name);
    return tree::texts(below(id_, name));
}

std::vector<float> Group::values(const Variable& variable, const Packing& packing,
                                 ValueBudget& budget) const {
    budget.take(variable.count(), 1, variable.name);
    const Decoder decode(packing);
    std::vector<float> values;
    values.reserve(variable.count());
    for (const double raw : tree::numbers(paths()[static_cast<std::size_t>(variable.id)])) {
        values.push_back(decode(raw));
    }
    if (values.size() != variable.count()) {
        throw std::runtime_error(variable.name + " cannot be read");
    }
    return values;
}

Group openFile(const std::string&) {
    paths().clear();
    auto file = std::make_shared<OpenFile>();
    return Group(std::move(file), idOf(""), "");
}

}  // namespace scan::netcdf
