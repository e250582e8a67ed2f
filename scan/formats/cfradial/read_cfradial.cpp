/*
 * CfRadial. Release 1 stacks the rays of all sweeps; release 2 has a group for each. What belongs
 * to the whole volume is at the top of the file in both.
 */
#include "scan/formats/cfradial/read_cfradial.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "scan/formats/cfradial/cfradial_rays.h"
#include "scan/formats/cfradial/cfradial_sweeps.h"
#include "scan/formats/cfradial/cfradial_time.h"
#include "scan/quantile.h"

namespace scan::cfradial {
namespace {

constexpr double kLightSpeedMPerS = 299792458;

bool isRhi(const std::string& mode) {
    return mode.find("rhi") != std::string::npos || mode == "elevation_surveillance";
}

void addSweep(const Slice& slice, const Rays& rays, const std::vector<StackedField>& fields,
              ValueBudget& budget, Scan& scan) {
    Sweep sweep;
    sweep.number = slice.number;
    sweep.mode = slice.mode;
    sweep.rhi = isRhi(slice.mode);
    fillSweep(rays, slice.begin, slice.end, sweep);
    sweep.fixedAngleDeg = std::isfinite(slice.fixedAngleDeg)
                              ? slice.fixedAngleDeg
                              : upperMedian(sweep.rhi ? sweep.azimuthDeg : sweep.elevationDeg);
    if (!(sweep.gateSpacingM > 0)) {
        scan.damage.push_back("The gate spacing of sweep " + std::to_string(sweep.number) +
                              " is not known: the sweep is left out.");
        return;
    }
    budget.take(fields.size() * static_cast<std::size_t>(sweep.nrays),
                static_cast<std::uint64_t>(sweep.ngates), "a sweep");
    for (const StackedField& stacked : fields) {
        sweep.fields.push_back(cutField(stacked, rays, slice.begin, sweep));
    }
    scan.sweeps.push_back(std::move(sweep));
}

void noteRange(const Rays& rays, Scan& scan) {
    const std::string sentence = "The ranges of the gates are not evenly spaced.";
    if (rays.irregular && (scan.oddities.empty() || scan.oddities.back() != sentence)) {
        scan.oddities.push_back(sentence);
    }
}

void readStacked(const netcdf::Group& file, ValueBudget& budget, Scan& scan) {
    const Rays rays = readRays(file, budget);
    const std::vector<StackedField> fields = readFields(file, rays, budget, scan.damage);
    for (const Slice& slice : slicesOf(file, rays.count, budget, scan.damage)) {
        addSweep(slice, rays, fields, budget, scan);
    }
    noteRange(rays, scan);
}

void readSweepGroup(const netcdf::Group& group, int index, ValueBudget& budget, Scan& scan) {
    const Rays rays = readRays(group, budget);
    const auto modes = group.texts("sweep_mode", budget);
    Slice slice;
    slice.end = rays.count;
    slice.number = sweepNumber(group, index, budget);
    slice.fixedAngleDeg =
        group.firstNumber({"sweep_fixed_angle", "fixed_angle"}, budget).value_or(NAN);
    slice.mode = modes.empty() ? group.text("sweep_mode") : modes[0];
    addSweep(slice, rays, readFields(group, rays, budget, scan.damage), budget, scan);
    noteRange(rays, scan);
}

void fillSite(const netcdf::Group& file, ValueBudget& budget, Scan& scan) {
    scan.radarName = file.text("instrument_name");
    scan.siteName = file.text("site_name");
    scan.history = file.text("history");
    scan.source = file.text("odim_source");
    scan.latitudeDeg = file.firstNumber({"latitude"}, budget).value_or(0);
    scan.longitudeDeg = file.firstNumber({"longitude"}, budget).value_or(0);
    scan.altitudeM = file.firstNumber({"altitude"}, budget).value_or(0);
    const std::vector<std::string> start = file.texts("time_coverage_start", budget);
    std::optional<double> seconds =
        parseMoment(start.empty() ? file.text("time_coverage_start") : start[0]);
    if (!seconds && !scan.sweeps[0].rayTimeS.empty()) {
        seconds = scan.sweeps[0].rayTimeS[0];
    }
    if (seconds) {
        scan.time = dateTimeOf(*seconds);
    }
}

/* Parameters are at the top in release 1, in groups in release 2. */
void fillRadar(const netcdf::Group& file, ValueBudget& budget, Scan& scan) {
    std::vector<netcdf::Group> places = {file};
    const std::vector<netcdf::Group> sweeps = sweepGroups(file);
    if (!sweeps.empty()) {
        places.push_back(sweeps.front());
    }
    for (const char* name : {"radar_parameters", "instrument_parameters", "radar_calibration"}) {
        const auto group = file.find(name);
        if (group) {
            places.push_back(*group);
        }
    }
    for (const netcdf::Group& place : places) {
        const auto number = [&](std::initializer_list<const char*> names) {
            return place.firstNumber(names, budget);
        };
        scan.beamWidthDeg = number({"radar_beam_width_h", "beam_width_h", "beamwidth_h"})
                                .value_or(scan.beamWidthDeg);
        const auto frequency = number({"frequency"});
        if (frequency && *frequency > 0) {
            scan.wavelengthM = kLightSpeedMPerS / *frequency;
        }
        const auto known = [&](const char* name, float& value, double unit) {
            const auto found = number({name});
            value = found && *found > 0 ? static_cast<float>(*found * unit) : value;
        };
        Operation& operation = scan.operation;
        known("pulse_width", operation.pulseLengthM, kLightSpeedMPerS);
        known("n_samples", operation.pulsesPerRay, 1);
        known("scan_rate", operation.turnsPerMinute, 1.0 / 6);
        const auto interval = number({"prt"});
        if (interval && *interval > 0) {
            operation.pulsesPerSecond = static_cast<float>(1 / *interval);
        }
        const auto base = number({"r_calib_base_dbz_1km_hc", "base_1km_hc", "base_dbz_1km_hc"});
        if (base) {
            scan.hasRadarConstant = true;
            scan.radarConstantDb = -*base;
        }
    }
}

}  // namespace

bool hasSweepGroups(const netcdf::Group& file) {
    return !sweepGroups(file).empty();
}

Scan readCfRadial(const netcdf::Group& file, ValueBudget& budget) {
    Scan scan;
    const std::vector<netcdf::Group> groups = sweepGroups(file);
    scan.format = groups.empty() ? "CfRadial 1" : "CfRadial 2";
    if (groups.empty() && !file.variable("azimuth")) {
        throw std::runtime_error("is a NetCDF or HDF5 file, but neither ODIM_H5 nor CfRadial");
    }
    if (groups.empty()) {
        readStacked(file, budget, scan);
    }
    for (std::size_t i = 0; i < groups.size(); ++i) {
        try {
            readSweepGroup(groups[i], static_cast<int>(i), budget, scan);
        } catch (const std::runtime_error& error) {
            scan.damage.push_back(std::string(error.what()) + ": the sweep is left out.");
        }
    }
    if (scan.sweeps.empty()) {
        throw std::runtime_error(scan.damage.empty() ? "holds no sweeps"
                                                     : "holds no sweeps: " + scan.damage[0]);
    }
    fillSite(file, budget, scan);
    fillRadar(file, budget, scan);
    return scan;
}

}  // namespace scan::cfradial
