// write.cpp - sweeps as files, by the rules of the program's output option.
#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "scan/class_codes.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/write_classes.h"
#include "scan/quiet_library.h"

namespace python {
namespace {

template <typename T>
std::vector<T> vectorOf(const py::handle& value) {
    const auto array = py::cast<Array<T>>(value);
    return {array.data(), array.data() + array.size()};
}

scan::Field fieldOf(const py::dict& given) {
    scan::Field field;
    field.name = py::cast<std::string>(given["name"]);
    field.units = py::cast<std::string>(given["units"]);
    field.values = vectorOf<float>(given["values"]);
    field.noEcho = py::cast<std::optional<float>>(given["no_echo"]);
    return field;
}

scan::Sweep sweepOf(const py::dict& given) {
    scan::Sweep sweep;
    sweep.number = py::cast<int>(given["number"]);
    sweep.rhi = py::cast<bool>(given["rhi"]);
    sweep.fixedAngleDeg = py::cast<double>(given["fixed_angle"]);
    sweep.azimuthDeg = vectorOf<double>(given["azimuth"]);
    sweep.elevationDeg = vectorOf<double>(given["elevation"]);
    sweep.nrays = static_cast<int>(sweep.azimuthDeg.size());
    sweep.ngates = py::cast<int>(given["ngates"]);
    sweep.gateSpacingM = py::cast<double>(given["gate_spacing"]);
    sweep.firstGateM = py::cast<double>(given["first_gate"]);
    sweep.mode = py::cast<std::string>(given["mode"]);
    sweep.rayTimeS = vectorOf<double>(given["ray_time"]);
    sweep.nyquist = py::cast<double>(given["nyquist_velocity"]);
    for (const py::handle& field : given["fields"]) {
        sweep.fields.push_back(fieldOf(py::cast<py::dict>(field)));
    }
    return sweep;
}

scan::Scan scanOf(const py::dict& given) {
    scan::Scan scan;
    scan.radarName = py::cast<std::string>(given["radar_name"]);
    scan.siteName = py::cast<std::string>(given["site_name"]);
    scan.latitudeDeg = py::cast<double>(given["latitude"]);
    scan.longitudeDeg = py::cast<double>(given["longitude"]);
    scan.altitudeM = py::cast<double>(given["altitude"]);
    scan.beamWidthDeg = py::cast<double>(given["beam_width"]);
    scan.wavelengthM = py::cast<double>(given["wavelength"]);
    const auto time = py::cast<std::vector<int>>(given["time"]);
    scan.time = {time.at(0), time.at(1), time.at(2), time.at(3), time.at(4), time.at(5)};
    for (const py::handle& sweep : given["sweeps"]) {
        scan.sweeps.push_back(sweepOf(py::cast<py::dict>(sweep)));
    }
    scan::hideNoEcho(scan);
    return scan;
}

// The class fields of all sweeps, which lose them; none where a sweep has none.
std::vector<scan::Field> takeClassFields(scan::Scan& scan) {
    std::vector<scan::Field> taken;
    for (scan::Sweep& sweep : scan.sweeps) {
        const auto found =
            std::find_if(sweep.fields.begin(), sweep.fields.end(), scan::isClassField);
        if (found == sweep.fields.end()) {
            return {};
        }
        taken.push_back(*found);
    }
    for (scan::Sweep& sweep : scan.sweeps) {
        sweep.fields.erase(
            std::find_if(sweep.fields.begin(), sweep.fields.end(), scan::isClassField));
    }
    return taken;
}

scan::WrittenFiles writeFlagged(const std::string& path, scan::Scan& scan) {
    const std::vector<scan::Field> fields = takeClassFields(scan);
    if (fields.empty()) {
        return scan::writeScan(path, scan);
    }
    std::vector<scan::SweepClasses> classes;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        classes.push_back({&scan.sweeps[i], &fields[i].values});
    }
    return scan::writeClasses(path, scan, nullptr, classes);
}

// Writes the classes as flags where the format has them (flagged), else as one field of several.
// Returns names of the files, and notes about what their format cannot hold. Names are bytes.
py::tuple writeScan(const std::string& path, const py::dict& given, bool flagged) {
    scan::Scan scan = scanOf(given);
    scan::WrittenFiles written;
    {
        const py::gil_scoped_release release;
        const scan::QuietLibrary quiet;
        written = flagged ? writeFlagged(path, scan) : scan::writeScan(path, scan);
    }
    py::list paths;
    for (const std::string& name : written.paths) {
        paths.append(py::bytes(name));
    }
    return py::make_tuple(paths, written.notes);
}

}  // namespace

void bindWrite(py::module_& module) {
    module.def("write_scan", &writeScan, py::arg("path"), py::arg("scan"), py::arg("flagged"));
}

}  // namespace python
