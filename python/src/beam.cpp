// beam.cpp - geometry and pattern of the beam, vertical profiles of reflectivity.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"

namespace python {
namespace {

// A relation of the beam for pairs of numbers.
template <void (Cradarpro::*relate)(double*, double, double*, int)>
Array<double> related(const Array<double>& first, const Array<double>& second) {
    Array<double> result = like<double>(first);
    double* out = result.mutable_data();
    const auto n = static_cast<std::size_t>(first.size());
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        for (std::size_t i = 0; i < n; ++i) {
            (radar.*relate)(values(first) + i, second.data()[i], out + i, 1);
        }
    }
    return result;
}

Array<double> copyOf(const double* data, int n) {
    Array<double> result(n);
    std::copy_n(data, n, result.mutable_data());
    return result;
}

py::tuple beamPattern(double beamwidth, double range, double elevation) {
    double *power = nullptr, *angles = nullptr, *heightPower = nullptr, *heights = nullptr;
    int nangles = 0, nheights = 0;
    {
        const py::gil_scoped_release release;
        Cradarpro().BeamPowerProfile(beamwidth, range, elevation, &power, &angles, nangles,
                                     &heightPower, &heights, nheights);
    }
    const std::unique_ptr<double[]> owned[] = {
        std::unique_ptr<double[]>(angles), std::unique_ptr<double[]>(power),
        std::unique_ptr<double[]>(heights), std::unique_ptr<double[]>(heightPower)};
    return py::make_tuple(copyOf(angles, nangles), copyOf(power, nangles),
                          copyOf(heights, nheights), copyOf(heightPower, nheights));
}

// Linear values (profile, level), the level of the freezing level, metres between levels.
py::tuple verticalProfiles(std::string file) {
    double* profiles = nullptr;
    int nprofiles = 0, nlevels = 0, level = 0;
    double step = 0;
    int read = 0;
    {
        const py::gil_scoped_release release;
        read = Cradarpro().GetVPR(&profiles, nprofiles, nlevels, level, step, file.data(), 0);
    }
    const std::unique_ptr<double[]> owned(profiles);
    if (read != 1) {
        throw std::runtime_error("cannot read " + file);
    }
    Array<double> result({nprofiles, nlevels});
    std::copy_n(profiles, result.size(), result.mutable_data());
    return py::make_tuple(result, level, step);
}

Array<float> correctProfile(const Array<float>& zhh, const Array<float>& freezingLevel,
                            const Array<double>& elevation, const std::string& file, double spacing,
                            double beamwidth) {
    const Size size(zhh);
    Array<float> result = like<float>(zhh);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        for (std::size_t s = 0; s < size.scans; ++s) {
            const std::size_t at = s * size.gates();
            const auto context = std::make_unique<Crres>();
            if (file.size() >= sizeof context->vprfile) {
                throw std::length_error("path too long");
            }
            std::memcpy(context->vprfile, file.c_str(), file.size() + 1);
            Loan loan(size, static_cast<float>(spacing), static_cast<float>(elevation.data()[s]));
            loan.copy(values(zhh) + at, context->zhh);
            context->zhh.beamwidth = static_cast<float>(beamwidth);
            loan.lend(values(freezingLevel) + at, context->fzl);
            context->VPRCorrection();
            std::copy_n(context->zhh.data, size.gates(), out + at);
        }
    }
    return result;
}

}  // namespace

void bindBeam(py::module_& module) {
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("beam_height", &related<&Cradarpro::h_beam>, field("range"), field("elevation"));
    module.def("slant_range", &related<&Cradarpro::r_beam>, field("height"), field("elevation"));
    module.def("beam_elevation", &related<&Cradarpro::gama>, field("height"), field("range"));
    module.def("beam_pattern", &beamPattern, py::arg("beamwidth"), py::arg("range"),
               py::arg("elevation"));
    module.def("vertical_profiles", &verticalProfiles, py::arg("file"));
    module.def("correct_profile", &correctProfile, field("zhh"), field("freezing_level"),
               field("elevation"), py::arg("file"), py::arg("spacing"), py::arg("beamwidth"));
}

}  // namespace python
