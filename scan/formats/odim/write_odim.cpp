/*
 * Writing ODIM_H5. The mandatory attributes of release 2.2, and those of how that keep geometry,
 * times and calibration.
 */
#include "scan/formats/odim/write_odim.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "scan/calendar.h"
#include "scan/formats/hdf5/hdf5_writer.h"
#include "scan/formats/odim/odim_classes.h"
#include "scan/formats/writing/history.h"
#include "scan/formats/writing/plain_values.h"
#include "scan/quantile.h"

namespace scan::odim {
namespace {

constexpr double kLightSpeedMPerS = 299792458;

std::string dateText(const DateTime& time) {
    char text[16];
    std::snprintf(text, sizeof text, "%04d%02d%02d", time.year % 10000, time.month % 100,
                  time.day % 100);
    return text;
}

std::string clockText(const DateTime& time) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d%02d%02d", time.hour % 100, time.minute % 100,
                  time.second % 100);
    return text;
}

/* As it was read, else made of the names. */
std::string sourceOf(const Scan& scan) {
    if (!scan.source.empty()) {
        return scan.source;
    }
    const std::string radar = scan.radarName.empty() ? "" : "NOD:" + scan.radarName;
    const std::string place = scan.siteName.empty() ? "" : "PLC:" + scan.siteName;
    const std::string both = radar + (radar.empty() || place.empty() ? "" : ",") + place;
    return both.empty() ? "CMT:unknown" : both;
}

const char* objectOf(const Scan& scan) {
    const bool allRhi = std::all_of(scan.sweeps.begin(), scan.sweeps.end(),
                                    [](const Sweep& sweep) { return sweep.rhi; });
    return allRhi ? "ELEV" : scan.sweeps.size() == 1 ? "SCAN" : "PVOL";
}

void writeTop(const hdf5::Writer& file, const Scan& scan) {
    file.text("Conventions", "ODIM_H5/V2_2");
    const hdf5::Writer what = file.group("what");
    what.text("object", objectOf(scan));
    what.text("version", "H5rad 2.2");
    what.text("date", dateText(scan.time));
    what.text("time", clockText(scan.time));
    what.text("source", sourceOf(scan));
    const hdf5::Writer where = file.group("where");
    where.number("lat", scan.latitudeDeg);
    where.number("lon", scan.longitudeDeg);
    where.number("height", scan.altitudeM);
    const hdf5::Writer how = file.group("how");
    how.text("history", historyOf(scan));
    const std::pair<const char*, double> numbers[] = {
        {"beamwH", scan.beamWidthDeg},
        {"wavelength", 100 * scan.wavelengthM},
        {"pulsewidth", scan.operation.pulseLengthM / kLightSpeedMPerS * 1e6},
        {"rpm", scan.operation.turnsPerMinute},
        {"highprf", scan.operation.pulsesPerSecond},
        {"Vsamples", scan.operation.pulsesPerRay},
        {"NEZ", scan.hasRadarConstant ? -scan.radarConstantDb : 0},
    };
    for (const auto& [name, value] : numbers) {
        if (value != 0) {
            how.number(name, value);
        }
    }
}

/* Values a ray, beginning with the one that is to be the first. */
template <class Values>
Values rolled(const Values& values, std::size_t rays, std::size_t first) {
    const std::size_t width = values.size() / rays;
    Values result(values);
    std::rotate(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(first * width),
                result.end());
    return result;
}

bool isCircle(const Sweep& sweep) {
    constexpr double kMaxGapDeg = 3, kMaxGapSteps = 2.5;
    std::vector<double> sorted = sweep.azimuthDeg;
    std::sort(sorted.begin(), sorted.end());
    double gap = sorted.front() + 360 - sorted.back();
    for (std::size_t r = 1; r < sorted.size(); ++r) {
        gap = std::max(gap, sorted[r] - sorted[r - 1]);
    }
    return gap <= std::max(kMaxGapDeg, kMaxGapSteps * 360 / sweep.nrays);
}

/* The ray nearest to north, clockwise from it; 0 where rays do not close a circle. */
std::size_t firstRay(const Sweep& sweep) {
    if (sweep.rhi || !isCircle(sweep)) {
        return 0;
    }
    return static_cast<std::size_t>(
        std::min_element(sweep.azimuthDeg.begin(), sweep.azimuthDeg.end()) -
        sweep.azimuthDeg.begin());
}

std::vector<double> shifted(std::vector<double> values, double by) {
    for (double& value : values) {
        value += by;
    }
    return values;
}

/* Half of the usual step between rays. */
double halfWidthDeg(const std::vector<double>& angles) {
    std::vector<double> steps;
    for (std::size_t r = 1; r < angles.size(); ++r) {
        steps.push_back(std::abs(std::remainder(angles[r] - angles[r - 1], 360.0)));
    }
    if (steps.empty()) {
        return 0.5;
    }
    return upperMedian(std::move(steps)) / 2;
}

void writeAngles(const hdf5::Writer& how, const char* start, const char* stop,
                 const std::vector<double>& middles) {
    const double half = halfWidthDeg(middles);
    how.numbers(start, shifted(middles, -half));
    how.numbers(stop, shifted(middles, half));
}

/* One dataset. */
class SweepWriter {
  public:
    SweepWriter(const hdf5::Writer& group, const Scan& scan, const Sweep& sweep)
        : group_(group),
          scan_(scan),
          sweep_(sweep),
          rays_(static_cast<std::size_t>(sweep.nrays)),
          first_(firstRay(sweep)) {}

    /* Returns the numbers of groups that are left. */
    FreeNumbers write() const {
        writeWhat();
        writeWhere();
        writeHow();
        FreeNumbers next;
        for (const Field& field : sweep_.fields) {
            writeField(field.task.empty() ? "data" + std::to_string(next.data++)
                                          : "quality" + std::to_string(next.quality++),
                       field);
        }
        return next;
    }

    [[nodiscard]] std::vector<float> inOrder(const std::vector<float>& values) const {
        return rolled(values, rays_, first_);
    }

  private:
    [[nodiscard]] std::vector<double> perRay(const std::vector<double>& values) const {
        return rolled(values, rays_, first_);
    }

    void writeWhat() const {
        DateTime begin = scan_.time, end = scan_.time;
        if (!sweep_.rayTimeS.empty()) {
            const auto ends = std::minmax_element(sweep_.rayTimeS.begin(), sweep_.rayTimeS.end());
            begin = dateTimeOf(*ends.first);
            end = dateTimeOf(std::ceil(*ends.second));
        }
        const hdf5::Writer what = group_.group("what");
        what.text("product", sweep_.rhi ? "RHI" : "SCAN");
        what.text("startdate", dateText(begin));
        what.text("starttime", clockText(begin));
        what.text("enddate", dateText(end));
        what.text("endtime", clockText(end));
    }

    void writeWhere() const {
        const hdf5::Writer where = group_.group("where");
        where.number(sweep_.rhi ? "az_angle" : "elangle", sweep_.fixedAngleDeg);
        where.whole("nbins", sweep_.ngates);
        where.whole("nrays", sweep_.nrays);
        where.number("rscale", sweep_.gateSpacingM);
        where.number("rstart", (sweep_.firstGateM - sweep_.gateSpacingM / 2) / 1000);
        where.whole("a1gate", firstInTime());
    }

    [[nodiscard]] long firstInTime() const {
        if (sweep_.rayTimeS.empty()) {
            return 0;
        }
        const std::vector<double> times = perRay(sweep_.rayTimeS);
        return std::min_element(times.begin(), times.end()) - times.begin();
    }

    void writeHow() const {
        const hdf5::Writer how = group_.group("how");
        if (sweep_.nyquist > 0) {
            how.number("NI", sweep_.nyquist);
        }
        const std::vector<double> azimuths = perRay(sweep_.azimuthDeg);
        const std::vector<double> elevations = perRay(sweep_.elevationDeg);
        if (sweep_.rhi) {
            writeAngles(how, "startelA", "stopelA", elevations);
            how.numbers("azangles", azimuths);
        } else {
            writeAngles(how, "startazA", "stopazA", azimuths);
            how.numbers("elangles", elevations);
        }
        if (!sweep_.rayTimeS.empty()) {
            const std::vector<double> times = perRay(sweep_.rayTimeS);
            how.numbers(sweep_.rhi ? "startelT" : "startazT", times);
            how.numbers(sweep_.rhi ? "stopelT" : "stopazT", times);
        }
    }

    void writeField(const std::string& name, const Field& field) const {
        const hdf5::Writer group = group_.group(name);
        if (!field.task.empty()) {
            group.group("how").text("task", field.task);
        }
        const float noEcho = noEchoMarkOf(field);
        const hdf5::Writer what = group.group("what");
        what.text("quantity", field.name);
        what.number("gain", 1);
        what.number("offset", 0);
        what.number("nodata", kMissingMark);
        what.number("undetect", noEcho);
        const std::vector<float> values = plainValues(field, kMissingMark, noEcho);
        group.plane("data", sweep_.nrays, sweep_.ngates, rolled(values, rays_, first_));
    }

    const hdf5::Writer& group_;
    const Scan& scan_;
    const Sweep& sweep_;
    std::size_t rays_, first_;
};

const SweepClasses* entryOf(const Sweep& sweep, const std::vector<SweepClasses>& classes) {
    for (const SweepClasses& entry : classes) {
        if (entry.sweep == &sweep) {
            return &entry;
        }
    }
    return nullptr;
}

bool isUsual(const std::string& mode) {
    const char* const kept[] = {"", "azimuth_surveillance", "rhi", "vertical_pointing"};
    return std::find(std::begin(kept), std::end(kept), mode) != std::end(kept);
}

std::vector<std::string> lost(const Scan& scan) {
    std::vector<std::string> notes;
    if (std::any_of(scan.sweeps.begin(), scan.sweeps.end(), hasShortRays)) {
        notes.push_back(
            "ODIM_H5 has no rays of different lengths: shorter rays are padded with missing "
            "gates.");
    }
    std::string numbers, modes;
    for (std::size_t i = 0; i < scan.sweeps.size(); ++i) {
        const Sweep& sweep = scan.sweeps[i];
        const int position = static_cast<int>(i) + 1;
        const bool counted = sweep.number == position || sweep.number == position - 1;
        if (!counted) {
            numbers.append(" ").append(std::to_string(sweep.number));
        }
        if (!isUsual(sweep.mode) && modes.find(sweep.mode) == std::string::npos) {
            modes.append(" ").append(sweep.mode);
        }
    }
    if (!numbers.empty()) {
        notes.push_back("ODIM_H5 counts sweeps from 1: their numbers are lost:" + numbers + ".");
    }
    if (!modes.empty()) {
        notes.push_back("ODIM_H5 has no name for the mode of some sweeps, which is lost:" + modes +
                        ".");
    }
    return notes;
}

}  // namespace

std::vector<std::string> writeOdim(const std::string& path, const Scan& scan,
                                   const std::vector<SweepClasses>& classes,
                                   const ClassForm& form) {
    const hdf5::Writer file = hdf5::Writer::create(path);
    writeTop(file, scan);
    int number = 0;
    for (const Sweep& sweep : scan.sweeps) {
        const hdf5::Writer dataset = file.group("dataset" + std::to_string(++number));
        const SweepWriter writer(dataset, scan, sweep);
        const FreeNumbers free = writer.write();
        const SweepClasses* entry = entryOf(sweep, classes);
        if (entry) {
            writeClasses(dataset, free, *entry, form,
                         [&](const std::vector<float>& values) { return writer.inOrder(values); });
        }
    }
    return lost(scan);
}

}  // namespace scan::odim
