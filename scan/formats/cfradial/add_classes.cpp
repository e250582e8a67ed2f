/* Classes added to an existing CfRadial file, a variable of the shape of its fields; fields cleaned
 * where they are. */
#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <stdexcept>

#include "scan/formats/cfradial/cfradial_output.h"
#include "scan/formats/cfradial/cfradial_rays.h"
#include "scan/formats/cfradial/cfradial_sweeps.h"
#include "scan/formats/cfradial/write_cfradial.h"
#include "scan/formats/writing/class_flags.h"
#include "scan/formats/writing/history.h"
#include "scan/formats/writing/plain_values.h"

namespace scan::cfradial {
namespace {

std::string freeName(const netcdf::Group& group, const char* wanted) {
    std::string name = wanted;
    while (group.variable(name)) {
        name += "_2";
    }
    return name;
}

[[noreturn]] void failMissing(const Sweep& sweep) {
    throw std::runtime_error("sweep " + std::to_string(sweep.number) + " is no longer in its file");
}

/* A new variable of the shape of fields: codes of classes, or values of their certainty. */
struct Layer {
    std::string name;
    const Field* field = nullptr;  // null: classes
    std::vector<float> values;     // NaN: none
};

/* A variable that is there, and its gates that are to hold no echo. */
struct Cleaning {
    Packing packing;
    std::vector<std::uint8_t> gates;
};

/* What is done to one group, "" for the file. */
struct Addition {
    std::string group;
    bool ragged = false;
    std::vector<Layer> layers;
    std::map<std::string, Cleaning> cleanings;  // by variable
};

/* Calls place(from, to) for every gate of a sweep: its index in the sweep and in the file. */
template <class Place>
void eachGate(const Sweep& sweep, const Rays& rays, std::size_t begin, bool ragged, Place place) {
    const auto width = static_cast<std::size_t>(sweep.ngates);
    for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
        const std::size_t ray = begin + r;
        const std::size_t to = ragged ? rays.start[ray] : ray * rays.maxGates;
        const std::size_t held =
            rays.gates.empty() ? width : static_cast<std::size_t>(rays.gates[ray]);
        for (std::size_t g = 0; g < std::min(held, width); ++g) {
            place(r * width + g, to + g);
        }
    }
}

Addition emptyAddition(const netcdf::Group& group, const SweepClasses& example, bool ragged,
                       std::size_t values) {
    Addition addition{group.name(), ragged, {}, {}};
    addition.layers.push_back({freeName(group, kClassName), nullptr, {}});
    for (const Field& field : example.certainty) {
        addition.layers.push_back({freeName(group, certaintyName(field).name), &field, {}});
    }
    for (Layer& layer : addition.layers) {
        layer.values.assign(values, NAN);
    }
    return addition;
}

void placeCleaning(const netcdf::Group& group, const SweepClasses& entry, const Rays& rays,
                   std::size_t begin, Addition& addition) {
    for (const std::string& name : entry.cleaned.fields) {
        const auto variable = group.variable(name);
        if (!variable) {
            throw std::runtime_error(name + " is no longer in its file");
        }
        Cleaning& cleaning = addition.cleanings[name];
        cleaning.packing = group.packingOf(*variable);
        cleaning.gates.resize(variable->count());
        const bool ragged = variable->dimensions.size() == 1;
        eachGate(*entry.sweep, rays, begin, ragged, [&](std::size_t from, std::size_t to) {
            if (to < cleaning.gates.size()) {
                cleaning.gates[to] = entry.cleaned.gates[from];
            }
        });
    }
}

void place(const SweepClasses& entry, const Rays& rays, std::size_t begin, Addition& addition) {
    for (std::size_t i = 0; i < addition.layers.size(); ++i) {
        std::vector<float>& values = addition.layers[i].values;
        const std::vector<float>& given =
            i == 0 ? *entry.classes : entry.certainty.at(i - 1).values;
        eachGate(*entry.sweep, rays, begin, addition.ragged, [&](std::size_t from, std::size_t to) {
            if (to < values.size()) {
                values[to] = given[from];
            }
        });
    }
}

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
    Addition addition = emptyAddition(file, classes.front(), points.has_value(),
                                      points.value_or(rays.count * rays.maxGates));
    std::map<int, int> taken;
    for (const SweepClasses& entry : classes) {
        int earlier = taken[entry.sweep->number]++;
        const auto slice = std::find_if(slices.begin(), slices.end(), [&](const Slice& known) {
            return known.number == entry.sweep->number &&
                   known.end - known.begin == static_cast<std::size_t>(entry.sweep->nrays) &&
                   earlier-- == 0;
        });
        if (slice == slices.end()) {
            failMissing(*entry.sweep);
        }
        place(entry, rays, slice->begin, addition);
        placeCleaning(file, entry, rays, slice->begin, addition);
    }
    return addition;
}

/* earlier: how many sweeps of that number come before it; writers do number them all alike. */
Addition groupAddition(const std::vector<netcdf::Group>& groups, const SweepClasses& entry,
                       int earlier, ValueBudget& budget) {
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (sweepNumber(groups[i], static_cast<int>(i), budget) != entry.sweep->number ||
            earlier-- > 0) {
            continue;
        }
        const Rays rays = readRays(groups[i], budget);
        Addition addition = emptyAddition(groups[i], entry, false, rays.count * rays.maxGates);
        place(entry, rays, 0, addition);
        placeCleaning(groups[i], entry, rays, 0, addition);
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
    std::map<int, int> taken;
    for (const SweepClasses& entry : classes) {
        additions.push_back(groupAddition(groups, entry, taken[entry.sweep->number]++, budget));
    }
    return additions;
}

void write(const netcdf::Writer& target, const netcdf::Dimensions& shape, const Layer& layer,
           const ClassForm& form) {
    if (layer.field) {
        std::vector<float> values = layer.values;
        std::replace_if(
            values.begin(), values.end(), [](float value) { return std::isnan(value); },
            kMissingMark);
        describeCertainty(target.floats(layer.name, shape, values, kMissingMark), *layer.field);
        return;
    }
    describeClasses(
        target.bytes(layer.name, shape, classBytes(layer.values, form.serviceCodes), kNoClass),
        form);
}

/* A field that knows no mark of no echo gets that of a missing value, which every reader knows. */
void clean(const netcdf::Writer& target, const std::string& name, const Cleaning& cleaning,
           std::set<std::string>& missing) {
    const Packing& packing = cleaning.packing;
    const std::optional<double> mark = packing.undetect ? packing.undetect
                                       : packing.nodata ? packing.nodata
                                                        : packing.missing;
    if (!mark) {
        throw std::runtime_error(name + " has no _FillValue for gates without a value");
    }
    if (!packing.undetect) {
        missing.insert(name);
    }
    const Mark absent(packing.nodata), alsoAbsent(packing.missing);
    std::vector<double> values = target.raw(name);
    for (std::size_t i = 0; i < std::min(values.size(), cleaning.gates.size()); ++i) {
        if (cleaning.gates[i] != 0 && !absent.matches(values[i]) &&
            !alsoAbsent.matches(values[i])) {
            values[i] = *mark;
        }
    }
    target.replace(name, values);
}

std::vector<std::string> noteMissing(const std::set<std::string>& names) {
    if (names.empty()) {
        return {};
    }
    std::string list;
    for (const std::string& name : names) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return {"No mark of no echo (_Undetect) in " + list +
            ": gates of clutter and noise are missing there."};
}

}  // namespace

std::vector<std::string> addCfRadialClasses(const std::string& path,
                                            const std::vector<SweepClasses>& classes,
                                            const ClassForm& form) {
    const std::vector<Addition> additions = additionsFor(path, classes);
    const std::string history = form.history.empty() ? "" : netcdf::openFile(path).text("history");
    const netcdf::Writer file = netcdf::Writer::open(path);
    std::set<std::string> missing;
    for (const Addition& addition : additions) {
        const netcdf::Writer target =
            addition.group.empty() ? file : file.existingGroup(addition.group);
        const netcdf::Dimensions rays = target.dimensionsOf("azimuth");
        const netcdf::Dimensions gates = target.dimensionsOf("range");
        const netcdf::Dimensions shape = addition.ragged
                                             ? netcdf::Dimensions{target.dimension("n_points")}
                                             : netcdf::Dimensions{rays.at(0), gates.back()};
        for (const auto& [name, cleaning] : addition.cleanings) {
            clean(target, name, cleaning, missing);
        }
        for (const Layer& layer : addition.layers) {
            write(target, shape, layer, form);
        }
    }
    if (!form.history.empty()) {
        file.text("history", extendedHistory(history, form.history));
    }
    file.close();
    return noteMissing(missing);
}

}  // namespace scan::cfradial
