/*
 * Reading NetCDF. Sizes are checked against the size of the file before memory is asked for, and
 * the library's own message is part of ours.
 */
#include "scan/formats/netcdf/nc_group.h"

#include <netcdf.h>
#include <netcdf_mem.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "scan/formats/netcdf/classic_size.h"
#include "scan/formats/reading/nameless_file.h"

namespace scan::netcdf {

static_assert(kByte == NC_BYTE && kChar == NC_CHAR && kShort == NC_SHORT && kInt == NC_INT &&
              kFloat == NC_FLOAT && kDouble == NC_DOUBLE && kUnsignedByte == NC_UBYTE &&
              kUnsignedShort == NC_USHORT && kString == NC_STRING);

namespace {

constexpr std::size_t kMaxAttributeBytes = 1 << 20;

std::string trimmed(std::string text) {
    text.resize(std::min(text.find('\0'), text.size()));
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}

template <class Raw>
void decodeAll(const std::vector<Raw>& raw, const Packing& packing, std::vector<float>& values) {
    const Decoder decode(packing);
    for (std::size_t i = 0; i < raw.size(); ++i) {
        values[i] = decode(static_cast<double>(raw[i]));
    }
}

int get(int id, int variable, short* values) {
    return nc_get_var_short(id, variable, values);
}
int get(int id, int variable, float* values) {
    return nc_get_var_float(id, variable, values);
}
int get(int id, int variable, double* values) {
    return nc_get_var_double(id, variable, values);
}

template <class Raw>
int readAs(int id, const Variable& variable, const Packing& packing, std::vector<float>& values) {
    std::vector<Raw> raw(values.size());
    const int status = get(id, variable.id, raw.data());
    decodeAll(raw, packing, values);
    return status;
}

}  // namespace

OpenFile::~OpenFile() {
    if (open) {
        nc_close(id);
    }
}

void Group::check(int status, const std::string& what) const {
    if (status != NC_NOERR) {
        throw std::runtime_error((name_.empty() ? "" : name_ + "/") + what +
                                 " cannot be read: " + nc_strerror(status));
    }
}

std::vector<Group> Group::groups() const {
    int count = 0;
    nc_inq_grps(id_, &count, nullptr);
    std::vector<int> ids(static_cast<std::size_t>(std::max(count, 0)));
    std::vector<Group> result;
    if (ids.empty() || nc_inq_grps(id_, &count, ids.data()) != NC_NOERR) {
        return result;
    }
    for (const int id : ids) {
        char name[NC_MAX_NAME + 1] = "";
        if (nc_inq_grpname(id, name) == NC_NOERR) {
            result.push_back(Group(file_, id, name));
        }
    }
    return result;
}

std::optional<Group> Group::find(const std::string& name) const {
    int id = 0;
    if (nc_inq_ncid(id_, name.c_str(), &id) != NC_NOERR) {
        return std::nullopt;
    }
    return Group(file_, id, name);
}

std::vector<Variable> Group::variables() const {
    int count = 0;
    nc_inq_nvars(id_, &count);
    std::vector<Variable> result;
    for (int id = 0; id < count; ++id) {
        char name[NC_MAX_NAME + 1] = "";
        if (nc_inq_varname(id_, id, name) == NC_NOERR) {
            std::optional<Variable> found = variable(name);
            if (found) {
                result.push_back(std::move(*found));
            }
        }
    }
    return result;
}

std::optional<Variable> Group::variable(const std::string& name) const {
    Variable found;
    found.name = name;
    int count = 0;
    int dimensions[NC_MAX_VAR_DIMS];
    if (nc_inq_varid(id_, name.c_str(), &found.id) != NC_NOERR ||
        nc_inq_var(id_, found.id, nullptr, &found.type, &count, dimensions, nullptr) != NC_NOERR) {
        return std::nullopt;
    }
    for (int d = 0; d < count; ++d) {
        char dimension[NC_MAX_NAME + 1] = "";
        std::size_t length = 0;
        check(nc_inq_dim(id_, dimensions[d], dimension, &length), name);
        found.dimensions.emplace_back(dimension);
        found.shape.push_back(length);
    }
    return found;
}

std::optional<double> Group::number(const std::string& attribute, const Variable* variable) const {
    const int id = variable ? variable->id : NC_GLOBAL;
    int type = 0;
    std::size_t length = 0;
    if (nc_inq_att(id_, id, attribute.c_str(), &type, &length) != NC_NOERR || length == 0 ||
        length > kMaxAttributeBytes) {
        return std::nullopt;
    }
    if (!isNumber(type)) {
        const std::string digits = text(attribute, variable);
        char* end = nullptr;
        const double value = std::strtod(digits.c_str(), &end);
        return end == digits.c_str() ? std::nullopt : std::optional(value);
    }
    std::vector<double> values(length);
    if (nc_get_att_double(id_, id, attribute.c_str(), values.data()) != NC_NOERR) {
        return std::nullopt;
    }
    return values[0];
}

std::string Group::text(const std::string& attribute, const Variable* variable) const {
    const int id = variable ? variable->id : NC_GLOBAL;
    int type = 0;
    std::size_t length = 0;
    if (nc_inq_att(id_, id, attribute.c_str(), &type, &length) != NC_NOERR || length == 0 ||
        length > kMaxAttributeBytes) {
        return "";
    }
    if (type == NC_STRING) {
        std::vector<char*> strings(length, nullptr);
        if (nc_get_att_string(id_, id, attribute.c_str(), strings.data()) != NC_NOERR) {
            return "";
        }
        std::string text = strings[0] ? strings[0] : "";
        nc_free_string(length, strings.data());
        return trimmed(std::move(text));
    }
    std::string text(length, '\0');
    if (type != NC_CHAR || nc_get_att_text(id_, id, attribute.c_str(), text.data()) != NC_NOERR) {
        return "";
    }
    return trimmed(std::move(text));
}

std::vector<double> Group::rawNumbers(const Variable& variable) const {
    std::vector<double> values(variable.count());
    check(nc_get_var_double(id_, variable.id, values.data()), variable.name);
    return values;
}

std::vector<std::string> Group::texts(const std::string& name, ValueBudget& budget) const {
    const std::optional<Variable> found = variable(name);
    std::vector<std::string> result;
    if (!found || isNumber(found->type) || found->count() == 0) {
        return result;
    }
    budget.take(found->count(), 1, name);
    if (found->type == NC_STRING) {
        std::vector<char*> strings(found->count(), nullptr);
        check(nc_get_var_string(id_, found->id, strings.data()), name);
        for (const char* string : strings) {
            result.push_back(trimmed(string ? string : ""));
        }
        nc_free_string(strings.size(), strings.data());
        return result;
    }
    std::string chars(found->count(), '\0');
    check(nc_get_var_text(id_, found->id, chars.data()), name);
    const std::size_t length = found->shape.empty() ? 1 : found->shape.back();
    for (std::size_t at = 0; at < chars.size(); at += length) {
        result.push_back(trimmed(chars.substr(at, length)));
    }
    return result;
}

std::vector<float> Group::values(const Variable& variable, const Packing& packing,
                                 ValueBudget& budget) const {
    budget.take(variable.count(), 1, variable.name);
    std::vector<float> values(variable.count());
    const bool small =
        variable.type == NC_BYTE || variable.type == NC_SHORT || variable.type == NC_UBYTE;
    const int status = small                       ? readAs<short>(id_, variable, packing, values)
                       : variable.type == NC_FLOAT ? readAs<float>(id_, variable, packing, values)
                                                   : readAs<double>(id_, variable, packing, values);
    check(status, variable.name);
    return values;
}

Group openFile(const std::string& path) {
    if (isCutShort(path)) {
        throw std::runtime_error("is a damaged NetCDF file: it is cut short");
    }
    // An absolute path cannot be taken for the address of a server.
    const std::string absolute = std::filesystem::absolute(path).string();
    auto file = std::make_shared<OpenFile>();
    int status = NC_NOERR;
    if (isNameless(path)) {
        file->bytes = bytesOf(path);
        status =
            nc_open_mem("memory", NC_NOWRITE, file->bytes.size(), file->bytes.data(), &file->id);
    } else {
        status = nc_open(absolute.c_str(), NC_NOWRITE, &file->id);
    }
    if (status != NC_NOERR) {
        throw std::runtime_error(std::string("is a damaged NetCDF file: ") + nc_strerror(status));
    }
    file->open = true;
    const int id = file->id;
    return Group(std::move(file), id, "");
}

}  // namespace scan::netcdf
