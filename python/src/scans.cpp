/* scans.cpp - whole scans as dictionaries of numpy arrays: the synthetic one. */
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "arrays.h"
#include "synthetic.h"

namespace python {
namespace {

/* Hands the memory of a vector over to an array, without a copy. */
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

/* Named after the arguments of `classify`. */
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

}  // namespace

void bindScans(py::module_& module) {
    module.def("synthetic_scan", &syntheticScan, py::arg("seed"), py::arg("nrays"),
               py::arg("ngates"));
}

}  // namespace python
