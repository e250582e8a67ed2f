/*
 * ODIM_H5: a file has the groups dataset1 ... datasetN, one a sweep; a dataset has data1 ... dataN,
 * one a quantity, and quality1 ... about all of them. Each level may have what, where and how.
 */
#include "scan/formats/odim/read_odim.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "scan/calendar.h"
#include "scan/formats/hdf5/hdf5_plane.h"
#include "scan/formats/odim/odim_levels.h"
#include "scan/formats/odim/odim_names.h"
#include "scan/formats/odim/odim_rays.h"
#include "scan/scan.h"

namespace scan::odim {
namespace {

constexpr double kLightSpeedMPerS = 299792458;

/* 10 for "dataset10" and "dataset"; 0 if it is something else. */
int numberOf(const std::string& name, const std::string& prefix) {
    if (name.rfind(prefix, 0) != 0 || name.size() == prefix.size() ||
        name.size() > prefix.size() + 6 ||
        name.find_first_not_of("0123456789", prefix.size()) != std::string::npos) {
        return 0;
    }
    return std::atoi(name.c_str() + prefix.size());
}

/* The groups prefix1, prefix2, ... in the order of their numbers. */
std::vector<int> numbered(const hdf5::Group& group, const std::string& prefix) {
    std::vector<int> numbers;
    for (const std::string& name : group.children()) {
        const int number = numberOf(name, prefix);
        if (number > 0) {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

bool isRelease24(const hdf5::Group& file, const Level& level) {
    const std::string release = file.text("Conventions").value_or("") + " " +
                                level.text(Folder::kWhat, "version").value_or("");
    return release.find("V2_4") != std::string::npos || release.find("2.4") != std::string::npos;
}

/* "NOD" of "WMO:02606,NOD:seang"; some files separate with semicolons. */
std::string identifier(const std::string& source, const std::string& key) {
    for (std::size_t begin = 0; begin < source.size();) {
        const std::size_t end = std::min(source.find_first_of(",;", begin), source.size());
        const std::string entry = source.substr(begin, end - begin);
        if (entry.rfind(key + ":", 0) == 0) {
            return entry.substr(key.size() + 1);
        }
        begin = end + 1;
    }
    return "";
}

std::string firstIdentifier(const std::string& source, std::initializer_list<const char*> keys) {
    for (const char* key : keys) {
        const std::string value = identifier(source, key);
        if (!value.empty()) {
            return value;
        }
    }
    return "";
}

void fillSite(const Level& root, Scan& scan) {
    scan.source = root.text(Folder::kWhat, "source").value_or("");
    scan.history = root.text(Folder::kHow, "history").value_or("");
    scan.radarName = firstIdentifier(scan.source, {"NOD", "RAD", "WIGOS", "WMO", "STN"});
    scan.siteName = firstIdentifier(scan.source, {"PLC", "CMT"});
    scan.latitudeDeg = root.number(Folder::kWhere, "lat").value_or(0);
    scan.longitudeDeg = root.number(Folder::kWhere, "lon").value_or(0);
    scan.altitudeM = root.number(Folder::kWhere, "height").value_or(0);
}

/* Of what is the same for all sweeps, as the first has it. */
void fillRadar(const Level& dataset, Scan& scan) {
    const auto number = [&](const char* name) {
        return dataset.number(Folder::kHow, name).value_or(0);
    };
    scan.beamWidthDeg =
        dataset.firstNumber(Folder::kHow, {"beamwH", "beamwidth", "beamwV"}).value_or(0);
    scan.wavelengthM = number("wavelength") / 100;
    if (scan.wavelengthM <= 0 && number("frequency") > 0) {
        scan.wavelengthM = kLightSpeedMPerS / number("frequency");
    }
    // Microseconds; a value this small is in seconds.
    const double pulse = number("pulsewidth");
    const double pulseS = pulse < 1e-3 ? pulse : pulse * 1e-6;
    scan.operation.pulseLengthM = static_cast<float>(pulseS * kLightSpeedMPerS);
    scan.operation.turnsPerMinute = static_cast<float>(number("rpm"));
    scan.operation.pulsesPerSecond = static_cast<float>(number("highprf"));
    // Reflectivity at 1 km that equals the noise; some files have it as 0.
    const double noise = number("NEZ");
    scan.hasRadarConstant = noise < -1 && noise > -100;
    scan.radarConstantDb = scan.hasRadarConstant ? -noise : 0;
    scan.operation.pulsesPerRay = static_cast<float>(number("Vsamples"));
}

/* The last word of how/task names a quality field that has no quantity of its own. */
std::string nameOf(const Level& data, const hdf5::Group& group, const std::string& fallback) {
    const std::optional<hdf5::Group> what = group.find("what");
    const std::string quantity = what ? what->text("quantity").value_or("") : "";
    if (!quantity.empty()) {
        return quantity;
    }
    const std::string task = data.text(Folder::kHow, "task").value_or("");
    return fallback.rfind("quality", 0) == 0 && !task.empty() ? task.substr(task.rfind('.') + 1)
                                                              : fallback;
}

class SweepReader {
  public:
    SweepReader(const Level& dataset, ValueBudget& budget, Scan& scan)
        : dataset_(dataset), budget_(budget), scan_(scan) {}

    /* Fields and number of rays and gates; none for a dataset that is not polar data. */
    void readFields(Sweep& sweep) {
        for (const char* prefix : {"data", "quality"}) {
            for (const int number : numbered(dataset_.group(), prefix)) {
                readField(prefix + std::to_string(number), sweep);
            }
        }
    }

  private:
    void readField(const std::string& name, Sweep& sweep) {
        const std::optional<hdf5::Group> group = dataset_.group().find(name);
        if (!group) {
            return;
        }
        const Level level(*group, &dataset_);
        const Packing packing = packingOf(level);
        Field field;
        try {
            hdf5::Plane plane = hdf5::readPlane(*group, "data", packing, budget_);
            fit(plane, group->path(), sweep);
            field.values = std::move(plane.values);
        } catch (const std::runtime_error& error) {
            scan_.damage.push_back(std::string(error.what()) + ".");
            return;
        }
        field.place = group->path();
        if (name.rfind("quality", 0) == 0) {
            const std::optional<hdf5::Group> how = group->find("how");
            field.task = how ? how->text("task").value_or("unknown") : "unknown";
        }
        field.name = unique(nameOf(level, *group, name), sweep);
        field.units = unitsOf(field.name);
        field.noEcho = noEchoOf(packing);
        sweep.fields.push_back(std::move(field));
    }

    /* The first field decides the number of rays; others may have more or fewer gates. */
    void fit(hdf5::Plane& plane, const std::string& path, Sweep& sweep) {
        if (sweep.fields.empty()) {
            sweep.nrays = plane.rows;
            sweep.ngates = plane.columns;
        }
        if (plane.rows != sweep.nrays) {
            throw std::runtime_error(path + " has " + std::to_string(plane.rows) +
                                     " rays where the data before it have " +
                                     std::to_string(sweep.nrays) + ": it is left out");
        }
        const int gates = std::max(plane.columns, sweep.ngates);
        if (gates > sweep.ngates) {
            budget_.take(sweep.fields.size() * static_cast<std::size_t>(sweep.nrays),
                         static_cast<std::uint64_t>(gates), path);
            for (Field& field : sweep.fields) {
                widen(field.values, sweep.nrays, sweep.ngates, gates);
            }
        }
        widen(plane.values, sweep.nrays, plane.columns, gates);
        sweep.ngates = gates;
    }

    static void widen(std::vector<float>& values, int rays, int from, int to) {
        if (from == to) {
            return;
        }
        std::vector<float> wider(static_cast<std::size_t>(rays) * static_cast<std::size_t>(to),
                                 kNoValue);
        for (int r = 0; r < rays; ++r) {
            std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(r) * from, from,
                        wider.begin() + static_cast<std::ptrdiff_t>(r) * to);
        }
        values = std::move(wider);
    }

    /* Fields are found by name, so two of one name become NAME and NAME_2. */
    static std::string unique(const std::string& name, const Sweep& sweep) {
        const auto taken = [&](const std::string& wanted) {
            return std::any_of(sweep.fields.begin(), sweep.fields.end(),
                               [&](const Field& field) { return field.name == wanted; });
        };
        std::string result = name;
        for (int copy = 2; taken(result); ++copy) {
            result = name + "_" + std::to_string(copy);
        }
        return result;
    }

    const Level& dataset_;
    ValueBudget& budget_;
    Scan& scan_;
};

/* The start of the first bin is in km, in release 2.4 in m. */
void fillGates(const Level& dataset, bool inMetres, Sweep& sweep) {
    const auto spacing = dataset.number(Folder::kWhere, "rscale");
    if (!spacing || !(*spacing > 0) || !std::isfinite(*spacing)) {
        throw std::runtime_error(dataset.group().pathOf("where") + " has no usable rscale");
    }
    const double start = dataset.number(Folder::kWhere, "rstart").value_or(0);
    sweep.gateSpacingM = *spacing;
    sweep.firstGateM = start * (inMetres ? 1 : 1000) + *spacing / 2;
}

void noteShape(const Level& dataset, const Sweep& sweep, Scan& scan) {
    const double rays = dataset.number(Folder::kWhere, "nrays").value_or(sweep.nrays);
    const double bins = dataset.number(Folder::kWhere, "nbins").value_or(sweep.ngates);
    if (rays != sweep.nrays || bins != sweep.ngates) {
        scan.oddities.push_back(dataset.group().pathOf("where") +
                                " declares another number of rays or bins than its data have.");
    }
}

void readDataset(const hdf5::Group& group, const Level& root, int number, bool release24,
                 ValueBudget& budget, Scan& scan) {
    const Level dataset(group, &root);
    const std::string object = root.text(Folder::kWhat, "object").value_or("");
    const std::string product = dataset.text(Folder::kWhat, "product").value_or("SCAN");
    Sweep sweep;
    sweep.number = number;
    SweepReader(dataset, budget, scan).readFields(sweep);
    if (sweep.fields.empty()) {
        return;
    }
    fillGates(dataset, release24, sweep);
    fillRays(dataset, object == "ELEV" || object == "RHI" || product == "RHI", sweep);
    if (object == "AZIM") {
        sweep.mode = "sector";
    }
    sweep.nyquist = std::max(0.0, dataset.number(Folder::kHow, "NI").value_or(0));
    noteShape(dataset, sweep, scan);
    if (scan.sweeps.empty()) {
        fillRadar(dataset, scan);
    }
    scan.sweeps.push_back(std::move(sweep));
}

/* Of the volume, else of its first sweep, else of its first ray. */
void fillTime(const Level& root, const hdf5::Group& file, Scan& scan) {
    auto seconds = timeOf(root, "date", "time");
    const std::optional<hdf5::Group> first = file.find("dataset1");
    if (!seconds && first) {
        seconds = timeOf(Level(*first, &root), "startdate", "starttime");
    }
    if (!seconds && !scan.sweeps[0].rayTimeS.empty()) {
        seconds = scan.sweeps[0].rayTimeS[0];
    }
    if (seconds) {
        scan.time = dateTimeOf(*seconds);
    } else {
        scan.oddities.push_back("what has no usable date and time.");
    }
}

void requirePolar(const Level& root) {
    const std::string object = root.text(Folder::kWhat, "object").value_or("PVOL");
    const char* const polar[] = {"PVOL", "SCAN", "AZIM", "ELEV", "RHI"};
    if (std::find(std::begin(polar), std::end(polar), object) == std::end(polar)) {
        throw std::runtime_error("is an ODIM_H5 file with an object " + object +
                                 ", which does not hold sweeps");
    }
}

}  // namespace

bool isOdim(const hdf5::Group& file) {
    if (file.text("Conventions").value_or("").rfind("ODIM", 0) == 0) {
        return true;
    }
    const std::optional<hdf5::Group> what = file.find("what");
    return what && what->has("object") && !numbered(file, "dataset").empty();
}

Scan readOdim(const hdf5::Group& file, ValueBudget& budget) {
    const Level root(file, nullptr);
    requirePolar(root);
    const bool release24 = isRelease24(file, root);
    Scan scan;
    scan.format = "ODIM_H5";
    fillSite(root, scan);
    for (const int number : numbered(file, "dataset")) {
        const auto group = file.find("dataset" + std::to_string(number));
        try {
            readDataset(group.value(), root, number, release24, budget, scan);
        } catch (const std::exception& error) {
            scan.damage.push_back(std::string(error.what()) + ": the sweep is left out.");
        }
    }
    if (scan.sweeps.empty()) {
        throw std::runtime_error(scan.damage.empty() ? "holds no sweeps"
                                                     : "holds no sweeps: " + scan.damage[0]);
    }
    fillTime(root, file, scan);
    return scan;
}

}  // namespace scan::odim
