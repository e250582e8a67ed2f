/*
 * Writing CfRadial. A volume whose sweeps share their gates is stacked as rays x range in release
 * 1; any other as a row of all gates, with the begin and number of each ray's. Release 2 has a
 * group a sweep and needs neither.
 */
#include "scan/formats/cfradial/write_cfradial.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "scan/calendar.h"
#include "scan/formats/cfradial/cfradial_output.h"
#include "scan/formats/writing/class_flags.h"
#include "scan/formats/writing/plain_values.h"

namespace scan::cfradial {
namespace {

/* A name that NetCDF takes. */
std::string variableName(const std::string& field) {
    std::string name;
    for (const char c : field) {
        const bool plain = std::isalnum(static_cast<unsigned char>(c)) || c == '_';
        name += plain ? c : '_';
    }
    const bool letter = !name.empty() && std::isalpha(static_cast<unsigned char>(name[0]));
    const bool taken =
        name == "range" || name == "time" || name == "azimuth" || name == "elevation";
    return letter && !taken ? name : "field_" + name;
}

const Field* find(const Sweep& sweep, const std::string& name) {
    for (const Field& field : sweep.fields) {
        if (field.name == name) {
            return &field;
        }
    }
    return nullptr;
}

std::vector<std::string> namesIn(const Scan& scan) {
    std::vector<std::string> names;
    for (const Sweep& sweep : scan.sweeps) {
        for (const Field& field : sweep.fields) {
            if (std::find(names.begin(), names.end(), field.name) == names.end()) {
                names.push_back(field.name);
            }
        }
    }
    return names;
}

int gatesOf(const Sweep& sweep, std::size_t ray) {
    return sweep.rayGates.empty() ? sweep.ngates : std::min(sweep.rayGates[ray], sweep.ngates);
}

bool sharesGates(const Scan& scan) {
    const Sweep& first = scan.sweeps.front();
    return std::all_of(scan.sweeps.begin(), scan.sweeps.end(), [&](const Sweep& sweep) {
        return !hasShortRays(sweep) && sweep.ngates == first.ngates &&
               sweep.firstGateM == first.firstGateM && sweep.gateSpacingM == first.gateSpacingM;
    });
}

std::vector<double> rangesOf(const Sweep& sweep, int gates) {
    std::vector<double> ranges;
    for (int g = 0; g < gates; ++g) {
        ranges.push_back(sweep.firstGateM + g * sweep.gateSpacingM);
    }
    return ranges;
}

/* Release 1. */
class StackWriter {
  public:
    StackWriter(const netcdf::Writer& file, const Scan& scan)
        : file_(file),
          scan_(scan),
          ragged_(!sharesGates(scan)),
          time_(file.dimension("time", rayCount(scan))),
          range_(file.dimension("range", maxGates(scan))),
          sweep_(file.dimension("sweep", scan.sweeps.size())),
          text_(file.dimension("string_length", kTextWidth)) {
        if (ragged_) {
            points_ = file.dimension("n_points", pointCount());
        }
    }

    void write(const std::vector<SweepClasses>& classes, const ClassForm& form) const {
        writeSweeps();
        writeRays();
        if (ragged_) {
            writeGates();
        }
        const auto longest =
            std::max_element(scan_.sweeps.begin(), scan_.sweeps.end(),
                             [](const Sweep& a, const Sweep& b) { return a.ngates < b.ngates; });
        describeRange(file_.doubles("range", {range_}, rangesOf(*longest, longest->ngates)),
                      *longest);
        for (const std::string& name : namesIn(scan_)) {
            writeField(name);
        }
        if (!classes.empty()) {
            writeClasses(classes, form);
        }
    }

  private:
    static std::size_t rayCount(const Scan& scan) {
        std::size_t rays = 0;
        for (const Sweep& sweep : scan.sweeps) {
            rays += static_cast<std::size_t>(sweep.nrays);
        }
        return rays;
    }

    static std::size_t maxGates(const Scan& scan) {
        int gates = 0;
        for (const Sweep& sweep : scan.sweeps) {
            gates = std::max(gates, sweep.ngates);
        }
        return static_cast<std::size_t>(gates);
    }

    [[nodiscard]] std::size_t pointCount() const {
        std::size_t points = 0;
        for (const Sweep& sweep : scan_.sweeps) {
            for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
                points += static_cast<std::size_t>(gatesOf(sweep, r));
            }
        }
        return points;
    }

    /* Calls add(sweep, ray) for all rays of the stack. */
    template <class Add>
    void eachRay(Add add) const {
        for (const Sweep& sweep : scan_.sweeps) {
            for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
                add(sweep, r);
            }
        }
    }

    void writeSweeps() const {
        std::vector<int> numbers, begins, ends;
        std::vector<double> angles;
        std::vector<std::string> modes;
        int ray = 0;
        for (const Sweep& sweep : scan_.sweeps) {
            numbers.push_back(sweep.number);
            angles.push_back(sweep.fixedAngleDeg);
            modes.push_back(modeOf(sweep));
            begins.push_back(ray);
            ray += sweep.nrays;
            ends.push_back(ray - 1);
        }
        file_.wholes("sweep_number", {sweep_}, numbers);
        file_.doubles("fixed_angle", {sweep_}, angles).text("units", "degrees");
        file_.wholes("sweep_start_ray_index", {sweep_}, begins);
        file_.wholes("sweep_end_ray_index", {sweep_}, ends);
        file_.texts("sweep_mode", {sweep_, text_}, kTextWidth, modes);
    }

    void writeRays() const {
        std::vector<double> times, azimuths, elevations, nyquists;
        for (const Sweep& sweep : scan_.sweeps) {
            const std::vector<double> seconds = secondsSince(scan_, sweep);
            times.insert(times.end(), seconds.begin(), seconds.end());
            azimuths.insert(azimuths.end(), sweep.azimuthDeg.begin(), sweep.azimuthDeg.end());
            elevations.insert(elevations.end(), sweep.elevationDeg.begin(),
                              sweep.elevationDeg.end());
            nyquists.insert(nyquists.end(), static_cast<std::size_t>(sweep.nrays), sweep.nyquist);
        }
        describeTime(file_.doubles("time", {time_}, times), scan_);
        describeAzimuth(file_.doubles("azimuth", {time_}, azimuths));
        describeElevation(file_.doubles("elevation", {time_}, elevations));
        if (*std::max_element(nyquists.begin(), nyquists.end()) > 0) {
            file_.doubles("nyquist_velocity", {time_}, nyquists).text("units", "meters per second");
        }
        writePulses(file_, time_, rayCount(scan_), scan_.operation);
        const double latest = *std::max_element(times.begin(), times.end());
        const DateTime end = dateTimeOf(secondsOf(scan_.time) + std::max(0.0, std::ceil(latest)));
        file_.texts("time_coverage_start", {text_}, kTextWidth, {momentText(scan_.time)});
        file_.texts("time_coverage_end", {text_}, kTextWidth, {momentText(end)});
        if (scan_.beamWidthDeg > 0) {
            file_.doubles("radar_beam_width_h", {}, {&scan_.beamWidthDeg, 1})
                .text("units", "degrees");
        }
        if (scan_.hasRadarConstant) {
            const double base = -scan_.radarConstantDb;
            file_.doubles("r_calib_base_dbz_1km_hc", {file_.dimension("r_calib", 1)}, {&base, 1})
                .text("units", "dBZ");
        }
    }

    void writeGates() const {
        std::vector<int> counts, starts;
        std::vector<double> first, spacing;
        int start = 0;
        eachRay([&](const Sweep& sweep, std::size_t ray) {
            counts.push_back(gatesOf(sweep, ray));
            starts.push_back(start);
            start += counts.back();
            first.push_back(sweep.firstGateM);
            spacing.push_back(sweep.gateSpacingM);
        });
        file_.wholes("ray_n_gates", {time_}, counts);
        file_.wholes("ray_start_index", {time_}, starts);
        file_.doubles("ray_start_range", {time_}, first).text("units", "meters");
        file_.doubles("ray_gate_spacing", {time_}, spacing).text("units", "meters");
    }

    [[nodiscard]] netcdf::Dimensions shape() const {
        return ragged_ ? netcdf::Dimensions{points_} : netcdf::Dimensions{time_, range_};
    }

    /* One value for all sweeps, if they agree. */
    [[nodiscard]] float commonNoEcho(const std::string& name) const {
        float common = NAN;
        for (const Sweep& sweep : scan_.sweeps) {
            const Field* field = find(sweep, name);
            if (field && !std::isnan(common) && noEchoMarkOf(*field) != common) {
                return kNoEchoMark;
            }
            common = field ? noEchoMarkOf(*field) : common;
        }
        return common;
    }

    void writeField(const std::string& name) const {
        const float noEcho = commonNoEcho(name);
        const Field* described = nullptr;
        std::vector<float> stacked;
        for (const Sweep& sweep : scan_.sweeps) {
            const Field* field = find(sweep, name);
            described = field && !described ? field : described;
            const std::vector<float> values =
                field ? plainValues(*field, kMissingMark, noEcho)
                      : std::vector<float>(static_cast<std::size_t>(sweep.nrays) *
                                               static_cast<std::size_t>(sweep.ngates),
                                           kMissingMark);
            appendRays(sweep, values, stacked);
        }
        describeField(file_.floats(variableName(name), shape(), stacked, kMissingMark), *described,
                      noEcho);
    }

    template <class Value>
    static void appendRays(const Sweep& sweep, const std::vector<Value>& values,
                           std::vector<Value>& stacked) {
        for (std::size_t r = 0; r < static_cast<std::size_t>(sweep.nrays); ++r) {
            const auto row = values.begin() + static_cast<std::ptrdiff_t>(r) * sweep.ngates;
            stacked.insert(stacked.end(), row, row + gatesOf(sweep, r));
        }
    }

    void writeClasses(const std::vector<SweepClasses>& classes, const ClassForm& form) const {
        std::vector<std::uint8_t> stacked;
        for (const Sweep& sweep : scan_.sweeps) {
            std::vector<std::uint8_t> codes(
                static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates),
                kNoClass);
            const SweepClasses* entry = entryOf(sweep, classes);
            if (entry) {
                codes = classBytes(*entry->classes, form.serviceCodes);
            }
            appendRays(sweep, codes, stacked);
        }
        std::string name = kClassName;
        const std::vector<std::string> taken = namesIn(scan_);
        while (std::find(taken.begin(), taken.end(), name) != taken.end()) {
            name += "_2";
        }
        describeClasses(file_.bytes(name, shape(), stacked, kNoClass), form);
        for (std::size_t i = 0; i < classes.front().certainty.size(); ++i) {
            writeCertainty(classes, i);
        }
    }

    void writeCertainty(const std::vector<SweepClasses>& classes, std::size_t index) const {
        std::vector<float> stacked;
        for (const Sweep& sweep : scan_.sweeps) {
            const SweepClasses* entry = entryOf(sweep, classes);
            const std::vector<float> values =
                entry ? plainValues(entry->certainty.at(index), kMissingMark, kNoEchoMark)
                      : std::vector<float>(static_cast<std::size_t>(sweep.nrays) *
                                               static_cast<std::size_t>(sweep.ngates),
                                           kMissingMark);
            appendRays(sweep, values, stacked);
        }
        const Field& field = classes.front().certainty[index];
        describeCertainty(file_.floats(certaintyName(field).name, shape(), stacked, kMissingMark),
                          field);
    }

    const netcdf::Writer& file_;
    const Scan& scan_;
    bool ragged_;
    int time_, range_, sweep_, text_, points_ = 0;
};

std::string groupName(std::size_t index) {
    char name[32];
    std::snprintf(name, sizeof name, "sweep_%04zu", index + 1);
    return name;
}

/* Release 2. */
void writeGroupClasses(const netcdf::Writer& group, const netcdf::Dimensions& shape,
                       const SweepClasses& entry, const ClassForm& form) {
    const std::vector<std::uint8_t> codes = classBytes(*entry.classes, form.serviceCodes);
    const char* name = find(*entry.sweep, kClassName) ? "CLASS_2" : kClassName;
    describeClasses(group.bytes(name, shape, codes, kNoClass), form);
    for (const Field& field : entry.certainty) {
        const std::vector<float> values = plainValues(field, kMissingMark, kNoEchoMark);
        describeCertainty(group.floats(certaintyName(field).name, shape, values, kMissingMark),
                          field);
    }
}

void writeGroup(const netcdf::Writer& group, const Scan& scan, const Sweep& sweep,
                const std::vector<SweepClasses>& classes, const ClassForm& form) {
    const int time = group.dimension("time", static_cast<std::size_t>(sweep.nrays));
    const int range = group.dimension("range", static_cast<std::size_t>(sweep.ngates));
    const int width = group.dimension("string_length", kTextWidth);
    group.wholes("sweep_number", {}, {&sweep.number, 1});
    group.doubles("sweep_fixed_angle", {}, {&sweep.fixedAngleDeg, 1}).text("units", "degrees");
    group.texts("sweep_mode", {width}, kTextWidth, {modeOf(sweep)});
    describeTime(group.doubles("time", {time}, secondsSince(scan, sweep)), scan);
    describeRange(group.doubles("range", {range}, rangesOf(sweep, sweep.ngates)), sweep);
    describeAzimuth(group.doubles("azimuth", {time}, sweep.azimuthDeg));
    describeElevation(group.doubles("elevation", {time}, sweep.elevationDeg));
    if (sweep.nyquist > 0) {
        const std::vector<double> nyquist(static_cast<std::size_t>(sweep.nrays), sweep.nyquist);
        group.doubles("nyquist_velocity", {time}, nyquist).text("units", "meters per second");
    }
    writePulses(group, time, static_cast<std::size_t>(sweep.nrays), scan.operation);
    if (hasShortRays(sweep)) {
        group.wholes("ray_n_gates", {time}, sweep.rayGates);
    }
    for (const Field& field : sweep.fields) {
        const float noEcho = noEchoMarkOf(field);
        describeField(group.floats(variableName(field.name), {time, range},
                                   plainValues(field, kMissingMark, noEcho), kMissingMark),
                      field, noEcho);
    }
    const SweepClasses* entry = entryOf(sweep, classes);
    if (entry) {
        writeGroupClasses(group, {time, range}, *entry, form);
    }
}

}  // namespace

std::vector<std::string> writeCfRadial1(const std::string& path, const Scan& scan,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form) {
    const netcdf::Writer file = netcdf::Writer::create(path);
    writeTop(file, scan, "CF/Radial instrument_parameters radar_parameters", "1.4");
    StackWriter(file, scan).write(classes, form);
    file.close();
    return {};
}

std::vector<std::string> writeCfRadial2(const std::string& path, const Scan& scan,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form) {
    const netcdf::Writer file = netcdf::Writer::create(path);
    writeTop(file, scan, "CF-1.7, Cf/Radial-2.0", "2.0");
    const int sweeps = file.dimension("sweep", scan.sweeps.size());
    const int width = file.dimension("string_length", kTextWidth);
    std::vector<std::string> names;
    std::vector<double> angles;
    for (std::size_t i = 0; i < scan.sweeps.size(); ++i) {
        names.push_back(groupName(i));
        angles.push_back(scan.sweeps[i].fixedAngleDeg);
    }
    file.texts("sweep_group_name", {sweeps, width}, kTextWidth, names);
    file.doubles("sweep_fixed_angle", {sweeps}, angles).text("units", "degrees");
    file.texts("time_coverage_start", {width}, kTextWidth, {momentText(scan.time)});
    if (scan.beamWidthDeg > 0) {
        file.group("radar_parameters")
            .doubles("radar_beam_width_h", {}, {&scan.beamWidthDeg, 1})
            .text("units", "degrees");
    }
    if (scan.hasRadarConstant) {
        const double base = -scan.radarConstantDb;
        file.group("radar_calibration").doubles("base_1km_hc", {}, {&base, 1}).text("units", "dBZ");
    }
    for (std::size_t i = 0; i < scan.sweeps.size(); ++i) {
        writeGroup(file.group(names[i]), scan, scan.sweeps[i], classes, form);
    }
    file.close();
    return {};
}

}  // namespace scan::cfradial
