/*
 * Rays of CfRadial. All rays of a file are stacked in time; those of a sweep follow each other.
 * With a dimension n_points the gates of all rays are, too: ray_n_gates and ray_start_index say
 * where.
 */
#include "scan/formats/cfradial/cfradial_rays.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "scan/formats/cfradial/cfradial_time.h"
#include "scan/scan.h"

namespace scan::cfradial {
namespace {

constexpr double kEvenShare = 0.05;  // of a gate, that ranges may differ from even ones

std::vector<double> required(const netcdf::Group& group, const char* name, std::size_t count,
                             ValueBudget& budget) {
    std::vector<double> values = group.numbers(name, budget);
    const bool finite =
        std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
    if (values.empty() || (count != 0 && values.size() != count) || !finite) {
        throw std::runtime_error((group.name().empty() ? "" : group.name() + "/") +
                                 std::string(name) + " is missing or not one number for each ray");
    }
    return values;
}

std::vector<double> optionalPerRay(const netcdf::Group& group, const char* name, std::size_t count,
                                   ValueBudget& budget) {
    std::vector<double> values = group.numbers(name, budget);
    if (values.size() != count) {
        values.clear();
    }
    return values;
}

void readTimes(const netcdf::Group& group, Rays& rays, ValueBudget& budget) {
    const auto variable = group.variable("time");
    if (!variable) {
        return;
    }
    const auto units = parseTimeUnits(group.text("units", &*variable));
    rays.timeS = optionalPerRay(group, "time", rays.count, budget);
    if (!units) {
        rays.timeS.clear();
    }
    for (double& time : rays.timeS) {
        time = units->zeroS + time * units->unitS;
    }
}

/* From the centres of the gates: attributes about them are often left from another file. */
void readRange(const netcdf::Group& group, Rays& rays, ValueBudget& budget) {
    const auto variable = group.variable("range");
    std::vector<double> range = group.numbers("range", budget);
    if (!variable || range.empty() || !std::isfinite(range.front())) {
        throw std::runtime_error((group.name().empty() ? "" : group.name() + "/") +
                                 std::string("range is missing"));
    }
    rays.gateDimension = variable->dimensions.empty() ? "range" : variable->dimensions.back();
    rays.maxGates = variable->shape.empty() ? 1 : variable->shape.back();
    range.resize(rays.maxGates);
    if (group.text("units", &*variable).rfind("k", 0) == 0) {
        std::transform(range.begin(), range.end(), range.begin(), [](double r) { return r * 1e3; });
    }
    const double steps = static_cast<double>(rays.maxGates) - 1;
    const double spacing = steps > 0 ? (range.back() - range.front()) / steps
                                     : group.number("meters_between_gates", &*variable).value_or(0);
    for (std::size_t g = 0; g < range.size(); ++g) {
        const double even = range.front() + static_cast<double>(g) * spacing;
        rays.irregular |= !(std::abs(range[g] - even) <= kEvenShare * spacing);
    }
    rays.firstM = {range.front()};
    rays.spacingM = {spacing};
}

void readRaggedGates(const netcdf::Group& group, Rays& rays, ValueBudget& budget) {
    const auto counts = optionalPerRay(group, "ray_n_gates", rays.count, budget);
    const auto starts = optionalPerRay(group, "ray_start_index", rays.count, budget);
    for (const double count : counts) {
        const double limit = static_cast<double>(rays.maxGates);
        rays.gates.push_back(
            static_cast<int>(std::isfinite(count) ? std::clamp(count, 0.0, limit) : 0));
    }
    for (const double start : starts) {
        rays.start.push_back(start >= 0 && start < 1e15 ? static_cast<std::size_t>(start)
                                                        : SIZE_MAX / 2);
    }
    const auto first = optionalPerRay(group, "ray_start_range", rays.count, budget);
    const auto spacing = optionalPerRay(group, "ray_gate_spacing", rays.count, budget);
    if (!first.empty() && !spacing.empty()) {
        rays.firstM = first;
        rays.spacingM = spacing;
    }
}

/* Texts and packings apart, what a field is: numbers of a gate of a ray. */
bool isField(const netcdf::Variable& variable, const Rays& rays, bool& ragged) {
    ragged = !rays.gates.empty() && !rays.start.empty() && variable.dimensions.size() == 1 &&
             variable.dimensions[0] == "n_points";
    const bool stacked = variable.dimensions.size() == 2 &&
                         variable.dimensions[0] == rays.rayDimension &&
                         variable.dimensions[1] == rays.gateDimension;
    return (ragged || stacked) && variable.name != "range";
}

double spreadOf(const std::vector<double>& values) {
    const auto ends = std::minmax_element(values.begin(), values.end());
    return *ends.second - *ends.first;
}

}  // namespace

Rays readRays(const netcdf::Group& group, ValueBudget& budget) {
    Rays rays;
    rays.azimuthDeg = required(group, "azimuth", 0, budget);
    rays.count = rays.azimuthDeg.size();
    rays.elevationDeg = required(group, "elevation", rays.count, budget);
    rays.rayDimension = group.variable("azimuth")->dimensions.empty()
                            ? ""
                            : group.variable("azimuth")->dimensions[0];
    for (double& azimuth : rays.azimuthDeg) {
        azimuth = std::fmod(azimuth, 360.0);
        azimuth += azimuth < 0 ? 360 : 0;
    }
    readTimes(group, rays, budget);
    readRange(group, rays, budget);
    readRaggedGates(group, rays, budget);
    rays.nyquist = optionalPerRay(group, "nyquist_velocity", rays.count, budget);
    return rays;
}

void fillSweep(const Rays& rays, std::size_t begin, std::size_t end, Sweep& sweep) {
    const auto cut = [&](const std::vector<double>& all) {
        return all.empty() ? all
                           : std::vector<double>(all.begin() + static_cast<std::ptrdiff_t>(begin),
                                                 all.begin() + static_cast<std::ptrdiff_t>(end));
    };
    sweep.nrays = static_cast<int>(end - begin);
    sweep.azimuthDeg = cut(rays.azimuthDeg);
    sweep.elevationDeg = cut(rays.elevationDeg);
    sweep.rayTimeS = cut(rays.timeS);
    sweep.ngates = static_cast<int>(rays.maxGates);
    if (!rays.gates.empty()) {
        sweep.rayGates.assign(rays.gates.begin() + static_cast<std::ptrdiff_t>(begin),
                              rays.gates.begin() + static_cast<std::ptrdiff_t>(end));
        const auto ends = std::minmax_element(sweep.rayGates.begin(), sweep.rayGates.end());
        sweep.ngates = std::max(1, *ends.second);
        if (*ends.first == *ends.second) {
            sweep.rayGates.clear();
        }
    }
    sweep.firstGateM = rays.firstM[rays.firstM.size() > 1 ? begin : 0];
    sweep.gateSpacingM = rays.spacingM[rays.spacingM.size() > 1 ? begin : 0];
    const double nyquist = rays.nyquist.empty() ? 0 : rays.nyquist[begin];
    sweep.nyquist = nyquist > 0 ? nyquist : 0;
    if (sweep.mode.empty()) {
        sweep.rhi = spreadOf(sweep.elevationDeg) > 3 && spreadOf(sweep.azimuthDeg) < 5;
        sweep.mode = sweep.rhi ? "rhi" : "";
    }
}

std::vector<StackedField> readFields(const netcdf::Group& group, const Rays& rays,
                                     ValueBudget& budget, std::vector<std::string>& damage) {
    std::vector<StackedField> fields;
    for (const netcdf::Variable& variable : group.variables()) {
        StackedField stacked;
        if (!netcdf::isNumeric(variable) || !isField(variable, rays, stacked.ragged)) {
            continue;
        }
        const Packing packing = group.packingOf(variable);
        try {
            stacked.values = group.values(variable, packing, budget);
        } catch (const std::runtime_error& error) {
            damage.push_back(std::string(error.what()) + ".");
            continue;
        }
        stacked.field.name = variable.name;
        stacked.field.units = group.text("units", &variable);
        stacked.field.noEcho = noEchoOf(packing);
        fields.push_back(std::move(stacked));
    }
    return fields;
}

Field cutField(const StackedField& stacked, const Rays& rays, std::size_t begin,
               const Sweep& sweep) {
    Field field = stacked.field;
    const auto width = static_cast<std::size_t>(sweep.ngates);
    field.values.assign(static_cast<std::size_t>(sweep.nrays) * width, kNoValue);
    for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
        const std::size_t ray = begin + r;
        const std::size_t from = stacked.ragged ? rays.start[ray] : ray * rays.maxGates;
        const std::size_t held =
            rays.gates.empty() ? width : static_cast<std::size_t>(rays.gates[ray]);
        if (from >= stacked.values.size()) {
            continue;
        }
        const std::size_t count = std::min({held, width, stacked.values.size() - from});
        std::copy_n(stacked.values.begin() + static_cast<std::ptrdiff_t>(from), count,
                    field.values.begin() + static_cast<std::ptrdiff_t>(r * width));
    }
    return field;
}

}  // namespace scan::cfradial
