/*
 * nc_values.cpp - values and marks of variables, whatever reads the bytes of the file.
 */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "scan/formats/netcdf/nc_group.h"

namespace scan::netcdf {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/* What the library puts where nothing was written; bytes have none. */
std::optional<double> defaultFill(int type) {
    switch (type) {
        case kShort:
            return -32767;
        case kUnsignedShort:
            return 65535;
        case kInt:
            return -2147483647;
        case kFloat:
            return static_cast<double>(9.9692099683868690e+36f);
        case kDouble:
            return 9.9692099683868690e+36;
        default:
            return std::nullopt;
    }
}

}  // namespace

bool isNumber(int type) {
    return type != kChar && type != kString && type <= kString;
}

bool isNumeric(const Variable& variable) {
    return isNumber(variable.type);
}

std::size_t Variable::count() const {
    std::size_t product = 1;
    for (const std::size_t length : shape) {
        product = length != 0 && product > SIZE_MAX / length ? SIZE_MAX : product * length;
    }
    return product;
}

std::vector<double> Group::numbers(const std::string& name, ValueBudget& budget) const {
    const std::optional<Variable> found = variable(name);
    if (!found || !isNumber(found->type) || found->count() == 0) {
        return {};
    }
    budget.take(found->count(), 1, name);
    std::vector<double> values = rawNumbers(*found);
    const Packing packing = packingOf(*found);
    const Mark nodata(packing.nodata), missing(packing.missing);
    for (double& value : values) {
        const bool absent = nodata.matches(value) || missing.matches(value);
        value = absent ? kNan : value * packing.gain + packing.offset;
    }
    return values;
}

std::optional<double> Group::firstNumber(std::initializer_list<const char*> names,
                                         ValueBudget& budget) const {
    for (const char* name : names) {
        const std::vector<double> values = numbers(name, budget);
        if (!values.empty() && std::isfinite(values[0])) {
            return values[0];
        }
    }
    return std::nullopt;
}

Packing Group::packingOf(const Variable& variable) const {
    Packing packing;
    packing.gain = number("scale_factor", &variable).value_or(1);
    packing.offset = number("add_offset", &variable).value_or(0);
    packing.nodata = number("_FillValue", &variable);
    if (!packing.nodata) {
        packing.nodata = defaultFill(variable.type);
    }
    packing.missing = number("missing_value", &variable);
    packing.undetect = number("_Undetect", &variable);
    return packing;
}

}  // namespace scan::netcdf
