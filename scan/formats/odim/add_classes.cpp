/* Classes added to an existing ODIM_H5 file, and its data cleaned where they are. */
#include <algorithm>
#include <stdexcept>

#include "scan/formats/hdf5/hdf5_plane.h"
#include "scan/formats/odim/odim_classes.h"
#include "scan/formats/odim/odim_levels.h"
#include "scan/formats/odim/write_odim.h"
#include "scan/formats/writing/history.h"

namespace scan::odim {
namespace {

int freeNumber(const hdf5::Group& dataset, const char* prefix) {
    int number = 1;
    while (dataset.holds(prefix + std::to_string(number))) {
        ++number;
    }
    return number;
}

/* The data of one field, and how they mark gates without a value. */
struct Target {
    std::string group, field;
    const SweepClasses* entry;
    Packing packing;
};

/* What is to be done to a file, found before it is opened to be written. */
struct Additions {
    std::vector<FreeNumbers> numbers;  // one a sweep
    std::vector<Target> targets;
    std::string history;
};

void addTargets(const hdf5::Group& file, const Level& dataset, const SweepClasses& entry,
                std::vector<Target>& targets) {
    for (const Field& field : entry.sweep->fields) {
        const auto& names = entry.cleaned.fields;
        if (std::find(names.begin(), names.end(), field.name) == names.end()) {
            continue;
        }
        const auto group = file.find(field.place);
        if (!group) {
            throw std::runtime_error(field.name + " is no longer in its file");
        }
        targets.push_back({field.place, field.name, &entry, packingOf(Level(*group, &dataset))});
    }
}

Additions planAdditions(const std::string& path, const std::vector<SweepClasses>& classes) {
    const hdf5::Group file = hdf5::openFile(path);
    const Level root(file, nullptr);
    Additions additions;
    additions.history = root.text(Folder::kHow, "history").value_or("");
    for (const SweepClasses& entry : classes) {
        const auto group = file.find("dataset" + std::to_string(entry.sweep->number));
        if (!group) {
            throw std::runtime_error("sweep " + std::to_string(entry.sweep->number) +
                                     " is no longer in its file");
        }
        additions.numbers.push_back({freeNumber(*group, "data"), freeNumber(*group, "quality")});
        addTargets(file, Level(*group, &root), entry, additions.targets);
    }
    return additions;
}

/* Marks of gates, cut or padded to the width of the data. */
std::vector<std::uint8_t> fitted(const SweepClasses& entry, int columns) {
    const auto from = static_cast<std::size_t>(entry.sweep->ngates);
    const auto to = static_cast<std::size_t>(columns);
    std::vector<std::uint8_t> gates(static_cast<std::size_t>(entry.sweep->nrays) * to);
    for (std::size_t r = 0; r < static_cast<std::size_t>(entry.sweep->nrays); ++r) {
        std::copy_n(entry.cleaned.gates.begin() + static_cast<std::ptrdiff_t>(r * from),
                    std::min(from, to), gates.begin() + static_cast<std::ptrdiff_t>(r * to));
    }
    return gates;
}

/* Data without a mark of no echo get one that none of their values is. */
void clean(const hdf5::Writer& file, const Target& target) {
    const hdf5::Writer group = file.group(target.group);
    hdf5::RawPlane plane = group.rawPlane("data");
    const std::vector<std::uint8_t> gates = fitted(*target.entry, plane.columns);
    const double undetect =
        target.packing.undetect ? *target.packing.undetect : plane.unusedValue();
    const Mark missing(target.packing.nodata);
    for (std::size_t i = 0; i < std::min(gates.size(), plane.values.size()); ++i) {
        if (gates[i] != 0 && !missing.matches(plane.values[i])) {
            plane.values[i] = undetect;
        }
    }
    group.replace("data", plane);
    if (!target.packing.undetect) {
        group.group("what").number("undetect", undetect);
    }
}

}  // namespace

std::vector<std::string> addOdimClasses(const std::string& path,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form) {
    const Additions additions = planAdditions(path, classes);
    const hdf5::Writer file = hdf5::Writer::open(path);
    for (const Target& target : additions.targets) {
        clean(file, target);
    }
    for (std::size_t i = 0; i < classes.size(); ++i) {
        writeClasses(file.group("dataset" + std::to_string(classes[i].sweep->number)),
                     additions.numbers[i], classes[i], form,
                     [](const std::vector<float>& values) { return values; });
    }
    if (!form.history.empty()) {
        file.group("how").text("history", extendedHistory(additions.history, form.history));
    }
    return {};
}

}  // namespace scan::odim
