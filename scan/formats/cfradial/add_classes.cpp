/* Classes added to an existing CfRadial file: a variable of the shape of its fields. */
#include <algorithm>
#include <stdexcept>

#include "scan/formats/cfradial/cfradial_output.h"
#include "scan/formats/cfradial/cfradial_rays.h"
#include "scan/formats/cfradial/cfradial_sweeps.h"
#include "scan/formats/cfradial/write_cfradial.h"
#include "scan/formats/class_flags.h"

namespace scan::cfradial {
namespace {

std::string freeName(const netcdf::Group& group) {
    std::string name = kClassName;
    while (group.variable(name)) {
        name += "_2";
    }
    return name;
}

[[noreturn]] void failMissing(const Sweep& sweep) {
    throw std::runtime_error("sweep " + std::to_string(sweep.number) + " is no longer in its file");
}

/* Codes of a sweep's rays, each where the ray is in the file. */
void placeCodes(const SweepClasses& entry, const Rays& rays, std::size_t begin, bool ragged,
                std::vector<std::uint8_t>& codes) {
    const Sweep& sweep = *entry.sweep;
    const auto width = static_cast<std::size_t>(sweep.ngates);
    for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
        const std::size_t ray = begin + r;
        const std::size_t to = ragged ? rays.start[ray] : ray * rays.maxGates;
        const std::size_t held =
            rays.gates.empty() ? width : static_cast<std::size_t>(rays.gates[ray]);
        for (std::size_t g = 0; g < std::min(held, width) && to + g < codes.size(); ++g) {
            codes[to + g] = codeOf((*entry.classes)[r * width + g]);
        }
    }
}

struct Addition {
    std::string group;  // "" for the file
    std::string name;
    bool ragged = false;
    std::vector<std::uint8_t> codes;
};

/* Fields of one value a gate, in one dimension. */
std::optional<std::size_t> raggedCount(const netcdf::Group& file, const Rays& rays) {
    if (rays.start.empty() || rays.gates.empty()) {
        return std::nullopt;
    }
    for (const netcdf::Variable& variable : file.variables()) {
        if (variable.dimensions == std::vector<std::string>{"n_points"}) {
            return variable.count();
        }
    }
    return std::nullopt;
}

Addition stackedAddition(const netcdf::Group& file, const std::vector<SweepClasses>& classes,
                         ValueBudget& budget) {
    const Rays rays = readRays(file, budget);
    std::vector<std::string> damage;
    const std::vector<Slice> slices = slicesOf(file, rays.count, budget, damage);
    const std::optional<std::size_t> points = raggedCount(file, rays);
    Addition addition{"", freeName(file), points.has_value(), {}};
    addition.codes.assign(points.value_or(rays.count * rays.maxGates), kNoClass);
    for (const SweepClasses& entry : classes) {
        const auto slice = std::find_if(slices.begin(), slices.end(), [&](const Slice& known) {
            return known.number == entry.sweep->number &&
                   known.end - known.begin == static_cast<std::size_t>(entry.sweep->nrays);
        });
        if (slice == slices.end()) {
            failMissing(*entry.sweep);
        }
        placeCodes(entry, rays, slice->begin, addition.ragged, addition.codes);
    }
    return addition;
}

Addition groupAddition(const std::vector<netcdf::Group>& groups, const SweepClasses& entry,
                       ValueBudget& budget) {
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (sweepNumber(groups[i], static_cast<int>(i), budget) != entry.sweep->number) {
            continue;
        }
        const Rays rays = readRays(groups[i], budget);
        Addition addition{groups[i].name(), freeName(groups[i]), false, {}};
        addition.codes.assign(rays.count * rays.maxGates, kNoClass);
        placeCodes(entry, rays, 0, false, addition.codes);
        return addition;
    }
    failMissing(*entry.sweep);
}

std::vector<Addition> additionsFor(const std::string& path,
                                   const std::vector<SweepClasses>& classes) {
    ValueBudget budget(SIZE_MAX / kMaxValuesPerByte);
    const netcdf::Group file = netcdf::openFile(path);
    const std::vector<netcdf::Group> groups = sweepGroups(file);
    if (groups.empty()) {
        return {stackedAddition(file, classes, budget)};
    }
    std::vector<Addition> additions;
    for (const SweepClasses& entry : classes) {
        additions.push_back(groupAddition(groups, entry, budget));
    }
    return additions;
}

}  // namespace

void addCfRadialClasses(const std::string& path, const std::vector<SweepClasses>& classes) {
    const std::vector<Addition> additions = additionsFor(path, classes);
    const netcdf::Writer file = netcdf::Writer::open(path);
    for (const Addition& addition : additions) {
        const netcdf::Writer place =
            addition.group.empty() ? file : file.existingGroup(addition.group);
        const netcdf::Dimensions rays = place.dimensionsOf("azimuth");
        const netcdf::Dimensions gates = place.dimensionsOf("range");
        const netcdf::Dimensions shape = addition.ragged
                                             ? netcdf::Dimensions{place.dimension("n_points")}
                                             : netcdf::Dimensions{rays.at(0), gates.back()};
        describeClasses(place.bytes(addition.name, shape, addition.codes, kNoClass));
    }
    file.close();
}

}  // namespace scan::cfradial
