// scans.cpp - whole scans as dictionaries of numpy arrays: the synthetic one, and those of
// files.
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "scan/class_codes.h"
#include "scan/classes/clean.h"
#include "scan/fields/field_choice.h"
#include "scan/fields/oddities.h"
#include "scan/fields/role.h"
#include "scan/formats/read_scan.h"
#include "scan/quiet_library.h"
#include "scan/scan_error.h"
#include "scan/synthetic/synthetic.h"
#include "scan/text.h"

namespace python {
namespace {

// Hands the memory of a vector over to an array, without a copy.
template <typename T>
py::array ownedArray(std::vector<T> values, std::vector<py::ssize_t> shape) {
    auto kept = std::make_unique<std::vector<T>>(std::move(values));
    const py::capsule owner(kept.get(),
                            [](void* vector) { delete static_cast<std::vector<T>*>(vector); });
    const std::vector<T>& held = *kept.release();
    return py::array_t<T>(std::move(shape), held.data(), owner);
}

template <typename T>
py::array ownedArray(std::vector<T> values) {
    const auto count = static_cast<py::ssize_t>(values.size());
    return ownedArray(std::move(values), {count});
}

// Named after the arguments of `classify`.
py::dict syntheticScan(std::uint64_t seed, int nrays, int ngates) {
    scan::SyntheticScan scan;
    std::vector<std::uint8_t> truth;
    {
        const py::gil_scoped_release release;
        scan = scan::makeSyntheticScan(seed, nrays, ngates);
        truth.assign(scan.truth.begin(), scan.truth.end());
    }
    const auto field = [&](std::vector<double>& values) {
        return ownedArray(std::move(values), {nrays, ngates});
    };
    py::dict result;
    result["dbzh"] = field(scan.zhh);
    result["zdr"] = field(scan.zdr);
    result["phidp"] = field(scan.phidp);
    result["rhohv"] = field(scan.rhohv);
    result["vrad"] = field(scan.velocity);
    result["wrad"] = field(scan.width);
    result["ldr"] = field(scan.ldr);
    result["clutter_likelihood"] = field(scan.likelihood);
    result["range"] = ownedArray(std::move(scan.rangeM));
    result["azimuth"] = ownedArray(std::move(scan.azimuthDeg));
    result["gate_spacing"] = scan.gateSpacingM;
    result["elevation"] = scan.elevationDeg;
    result["radar_constant"] = scan.radarConstantDb;
    result["min_snr"] = scan.minSnrDb;
    result["nyquist_velocity"] = scan.nyquist;
    result["truth"] = ownedArray(std::move(truth), {nrays, ngates});
    return result;
}

// --- files ---

const char* nameOf(scan::FileFormat format) {
    switch (format) {
        case scan::FileFormat::kUniversalFormat:
            return "uf";
        case scan::FileFormat::kFieldRecord:
            return "record";
        case scan::FileFormat::kPolarData:
            return "polar";
        case scan::FileFormat::kGermanDx:
            return "dx";
        case scan::FileFormat::kHdf5:
            return "hdf5";
        case scan::FileFormat::kNetcdf:
            return "netcdf";
        case scan::FileFormat::kNexrad:
            return "nexrad";
        case scan::FileFormat::kCompressed:
            return "compressed";
        case scan::FileFormat::kForeign:
        case scan::FileFormat::kUnknown:
            break;
    }
    return "";
}

py::dict fieldDict(scan::Field& field, int nrays, int ngates) {
    py::dict result;
    result["name"] = scan::printable(field.name);
    result["units"] = scan::printable(field.units);
    result["is_class"] = scan::isClassField(field);
    result["no_echo"] = field.noEcho;
    result["values"] = ownedArray(std::move(field.values), {nrays, ngates});
    return result;
}

py::dict sweepDict(scan::Sweep& sweep) {
    py::list fields;
    for (scan::Field& field : sweep.fields) {
        fields.append(fieldDict(field, sweep.nrays, sweep.ngates));
    }
    py::dict result;
    result["fields"] = fields;
    result["number"] = sweep.number;
    result["rhi"] = sweep.rhi;
    result["closed"] = scan::closesCircle(sweep);
    result["fixed_angle"] = sweep.fixedAngleDeg;
    result["nyquist_velocity"] = sweep.nyquist;
    result["gate_spacing"] = sweep.gateSpacingM;
    result["first_gate"] = sweep.firstGateM;
    result["ngates"] = sweep.ngates;
    result["azimuth"] = ownedArray(std::move(sweep.azimuthDeg));
    result["elevation"] = ownedArray(std::move(sweep.elevationDeg));
    result["ray_time"] = ownedArray(std::move(sweep.rayTimeS));
    return result;
}

// Names the argument that helps where one is missing.
template <class Read>
scan::Scan withHint(Read read) {
    try {
        return read();
    } catch (const scan::ScanError& error) {
        if (error.failure() != scan::Failure::kLayoutNeeded) {
            throw;
        }
        throw std::runtime_error(error.what() + std::string(": give layout=252, 260 or 280"));
    }
}

// The values of a file of any format; those of "no echo" stay as they are.
py::dict readScan(const std::string& path, int polarLayout) {
    scan::Scan scan;
    {
        const py::gil_scoped_release release;
        const scan::QuietLibrary quiet;
        scan = withHint([&] {
            return scan::readScan(
                path, {.polarLayout = polarLayout, .keepNoEcho = true, .oddities = false});
        });
    }
    py::list sweeps;
    for (scan::Sweep& sweep : scan.sweeps) {
        sweeps.append(sweepDict(sweep));
    }
    std::vector<std::string> unusual = scan.damage;
    unusual.insert(unusual.end(), scan.oddities.begin(), scan.oddities.end());
    const scan::DateTime& time = scan.time;
    py::dict result;
    result["sweeps"] = sweeps;
    result["format"] = scan.format;
    result["oddities"] = unusual;
    result["radar_name"] = scan::printable(scan.radarName);
    result["site_name"] = scan::printable(scan.siteName);
    result["latitude"] = scan.latitudeDeg;
    result["longitude"] = scan.longitudeDeg;
    result["altitude"] = scan.altitudeM;
    result["beam_width"] = scan.beamWidthDeg;
    result["wavelength"] = scan.wavelengthM;
    result["radar_constant"] =
        scan.hasRadarConstant ? py::cast(scan.radarConstantDb) : py::object(py::none());
    result["time"] =
        py::make_tuple(time.year, time.month, time.day, time.hour, time.minute, time.second);
    return result;
}

}  // namespace

void bindScans(py::module_& module) {
    module.attr("FILTER_SHARE") = scan::kFilterShare;
    module.def(
        "known_names",
        [](const std::string& name) { return scan::knownNames(scan::roleOfName(name)); },
        py::arg("name"));
    module.def("is_unfiltered_name", &scan::isUnfilteredName, py::arg("name"));
    module.def(
        "recognise",
        [](const std::string& path) {
            const py::gil_scoped_release release;
            return nameOf(scan::recognise(path));
        },
        py::arg("path"));
    module.def("read_scan", &readScan, py::arg("path"), py::arg("polar_layout"));
    module.def("is_spoiled_by_clutter", &scan::isSpoiledByClutter, py::arg("name"));
    module.def("synthetic_scan", &syntheticScan, py::arg("seed"), py::arg("nrays"),
               py::arg("ngates"));
}

}  // namespace python
