/*
 * Groups and attributes. Each attribute is read as the type that the file has, then converted: the
 * writers of radar files agree on names much more than on types.
 */
#include "scan/formats/hdf5/hdf5_group.h"

#include <cstdlib>
#include <stdexcept>

#include "scan/formats/reading/nameless_file.h"
#include "scan/opened_file.h"

namespace scan::hdf5 {
namespace {

constexpr hsize_t kMaxAttributeValues = 1 << 20;
constexpr std::size_t kMaxTextBytes = 1 << 20;
constexpr hsize_t kMaxChildren = 1 << 16;

Handle openAttribute(hid_t group, const std::string& name) {
    if (H5Aexists(group, name.c_str()) <= 0) {
        return Handle();
    }
    return Handle(H5Aopen(group, name.c_str(), H5P_DEFAULT));
}

hsize_t countOf(hid_t attribute) {
    const Handle space(H5Aget_space(attribute));
    const hssize_t count = space ? H5Sget_simple_extent_npoints(space.get()) : 0;
    return count > 0 ? static_cast<hsize_t>(count) : 0;
}

std::string trimmed(std::string text) {
    text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}

std::optional<std::string> variableText(hid_t attribute, hid_t type) {
    const Handle memory(H5Tcopy(H5T_C_S1));
    H5Tset_size(memory.get(), H5T_VARIABLE);
    H5Tset_cset(memory.get(), H5Tget_cset(type));
    char* chars = nullptr;
    if (H5Aread(attribute, memory.get(), &chars) < 0 || !chars) {
        return std::nullopt;
    }
    std::string text(chars);
    H5free_memory(chars);
    return trimmed(std::move(text));
}

std::optional<std::string> fixedText(hid_t attribute, hid_t type) {
    const std::size_t size = H5Tget_size(type);
    if (size == 0 || size > kMaxTextBytes) {
        return std::nullopt;
    }
    std::string text(size, '\0');
    if (H5Aread(attribute, type, text.data()) < 0) {
        return std::nullopt;
    }
    return trimmed(std::move(text));
}

/* Of a text or an array of one text. */
std::optional<std::string> textOf(hid_t attribute, hid_t type) {
    if (countOf(attribute) != 1) {
        return std::nullopt;
    }
    return H5Tis_variable_str(type) > 0 ? variableText(attribute, type)
                                        : fixedText(attribute, type);
}

std::vector<double> numbersOf(hid_t attribute) {
    const hsize_t count = countOf(attribute);
    if (count == 0 || count > kMaxAttributeValues) {
        return {};
    }
    std::vector<double> values(count);
    if (H5Aread(attribute, H5T_NATIVE_DOUBLE, values.data()) < 0) {
        return {};
    }
    return values;
}

}  // namespace

std::vector<double> numbersIn(const std::string& text) {
    std::vector<double> values;
    for (const char* at = text.c_str(); *at;) {
        char* end = nullptr;
        const double value = std::strtod(at, &end);
        if (end == at) {
            ++at;
            continue;
        }
        values.push_back(value);
        at = end;
    }
    return values;
}

std::vector<std::string> Group::children() const {
    H5G_info_t info;
    std::vector<std::string> names;
    if (H5Gget_info(id(), &info) < 0 || info.nlinks > kMaxChildren) {
        return names;
    }
    for (hsize_t i = 0; i < info.nlinks; ++i) {
        char name[256];
        const ssize_t length = H5Lget_name_by_idx(id(), ".", H5_INDEX_NAME, H5_ITER_INC, i, name,
                                                  sizeof name, H5P_DEFAULT);
        if (length > 0 && length < static_cast<ssize_t>(sizeof name) && holds(name)) {
            names.emplace_back(name);
        }
    }
    return names;
}

std::optional<Group> Group::find(const std::string& name) const {
    if (!holds(name)) {
        return std::nullopt;
    }
    Handle handle(H5Gopen2(id(), name.c_str(), H5P_DEFAULT));
    if (!handle) {
        return std::nullopt;
    }
    return Group(std::move(handle), pathOf(name));
}

/* A file must not make us read others, which soft links may lead to as well. */
bool Group::holds(const std::string& name) const {
    H5L_info_t link;
    return H5Lget_info(id(), name.c_str(), &link, H5P_DEFAULT) >= 0 && link.type == H5L_TYPE_HARD;
}

bool Group::has(const std::string& attribute) const {
    return H5Aexists(id(), attribute.c_str()) > 0;
}

std::optional<double> Group::number(const std::string& attribute) const {
    const std::vector<double> values = numbers(attribute);
    if (values.empty()) {
        return std::nullopt;
    }
    return values.front();
}

std::vector<double> Group::numbers(const std::string& attribute) const {
    const Handle handle = openAttribute(id(), attribute);
    const Handle type(handle ? H5Aget_type(handle.get()) : -1);
    if (!type) {
        return {};
    }
    const H5T_class_t kind = H5Tget_class(type.get());
    if (kind == H5T_STRING) {
        return numbersIn(textOf(handle.get(), type.get()).value_or(""));
    }
    return kind == H5T_INTEGER || kind == H5T_FLOAT ? numbersOf(handle.get())
                                                    : std::vector<double>();
}

std::optional<std::string> Group::text(const std::string& attribute) const {
    const Handle handle = openAttribute(id(), attribute);
    const Handle type(handle ? H5Aget_type(handle.get()) : -1);
    if (!type || H5Tget_class(type.get()) != H5T_STRING) {
        return std::nullopt;
    }
    return textOf(handle.get(), type.get());
}

void requireTree(const Group& root) {
    const auto isShared = [](hid_t, const char*, const H5O_info_t* object, void*) -> herr_t {
        return object->type == H5O_TYPE_GROUP && object->rc > 1 ? 1 : 0;
    };
    if (H5Ovisit(root.id(), H5_INDEX_NAME, H5_ITER_NATIVE, isShared, nullptr) != 0) {
        throw std::runtime_error(
            "is a damaged HDF5 file: its groups are linked in circles or not "
            "whole");
    }
}

Group openFile(const std::string& path) {
    constexpr std::size_t kGrowthBytes = 1 << 20;
    const Handle access(H5Pcreate(H5P_FILE_ACCESS));
    const bool nameless = isNameless(path);
    if (nameless) {
        std::vector<std::uint8_t> bytes = bytesOf(path);
        H5Pset_fapl_core(access.get(), kGrowthBytes, false);
        H5Pset_file_image(access.get(), bytes.data(), bytes.size());  // which copies it
    }
    const char* name = nameless ? "memory" : path.c_str();
    const Handle file(H5Fopen(name, H5F_ACC_RDONLY, access.get()));
    Handle root(file ? H5Gopen2(file.get(), "/", H5P_DEFAULT) : -1);
    if (!root) {
        failReading(path, "is a damaged HDF5 file: it is cut short or not whole");
    }
    return Group(std::move(root), "");
}

}  // namespace scan::hdf5
