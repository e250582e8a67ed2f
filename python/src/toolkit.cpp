// toolkit.cpp - textures, smoothing, isolated gates, signal-to-noise ratio, scores.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"
#include "scan/noise/estimate_noise.h"

namespace python {
namespace {

Array<float> texture(const Array<float>& field, const Array<float>& mask, int gates, int rays) {
    const Size size(field);
    Array<float> result = like<float>(field);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        CDSP dsp;
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            dsp.GetNxNPointStdWithMask(values(field) + at, values(mask) + at, size.ngates,
                                       size.nrays, out + at, gates, rays);
        }
    }
    return result;
}

Array<float> smooth(const Array<float>& field, const Array<float>& mask, int gates, int rays,
                    bool decibels) {
    const Size size(field);
    Array<float> result = like<float>(field);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        CDSP dsp;
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            dsp.Conv2DPPI(values(field) + at, out + at, values(mask) + at, size.ngates, size.nrays,
                          gates, rays, decibels);
        }
    }
    return result;
}

Array<bool> isolatedGates(const Array<float>& classes, int gates, int rays, int most) {
    const Size size(classes);
    Array<bool> result = like<bool>(classes);
    bool* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        const std::unique_ptr<float[]> flags(new float[size.gates()]);
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            radar.GetIsolatedPixels(values(classes) + at, flags.get(), size.ngates, size.nrays,
                                    gates, rays, most);
            for (std::size_t i = 0; i < size.gates(); ++i) {
                out[at + i] = flags[i] != 0;
            }
        }
    }
    return result;
}

Array<std::uint8_t> removeIsolated(const Array<float>& classes) {
    const Size size(classes);
    Array<std::uint8_t> result = like<std::uint8_t>(classes);
    std::uint8_t* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            const auto context = std::make_unique<Crres>();
            context->zhh.nrays = size.nrays;
            context->zhh.ngates = size.ngates;
            Loan(size, 0).copy(values(classes) + at, context->ccl);
            context->RemoveIsolatedPixels();
            for (std::size_t i = 0; i < size.gates(); ++i) {
                out[at + i] = static_cast<std::uint8_t>(context->ccl.data[i]);
            }
        }
    }
    return result;
}

Array<float> signalToNoise(const Array<float>& zhh, double spacing, double radarConstant) {
    const Size size(zhh);
    Array<float> result = like<float>(zhh);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            const auto context = std::make_unique<Crres>();
            Loan loan(size, static_cast<float>(static_cast<int>(spacing)));
            loan.lend(values(zhh) + at, context->zhh);
            context->zhh.radarconst = static_cast<float>(radarConstant);
            context->computeSNR();
            std::copy_n(context->snr.data, size.gates(), out + at);
        }
    }
    return result;
}

// For each scan: constant, least signal-to-noise ratio, evidence.
py::tuple estimateRadarConstant(const Array<float>& zhh, const OptionalArray<float>& rhohv,
                                double spacing) {
    const Size size(zhh);
    const auto scans = static_cast<py::ssize_t>(size.scans);
    Array<double> constants(scans), ratios(scans);
    Array<int> evidence(scans);
    double* constant = constants.mutable_data();
    double* ratio = ratios.mutable_data();
    int* found = evidence.mutable_data();
    {
        const py::gil_scoped_release release;
        for (std::size_t s = 0; s < size.scans; ++s) {
            const auto scanOf = [&](const float* field) {
                return std::vector<float>(field + s * size.gates(), field + (s + 1) * size.gates());
            };
            const std::vector<float> reflectivity = scanOf(values(zhh));
            const auto correlation = rhohv ? scanOf(values(rhohv)) : std::vector<float>();
            const scan::NoiseEstimate estimate = scan::estimateNoise(
                {{reflectivity, rhohv ? &correlation : nullptr, size.nrays, size.ngates, spacing}});
            constant[s] = estimate.radarConstantDb;
            ratio[s] = estimate.minSnrDb;
            found[s] = static_cast<int>(estimate.evidence);
        }
    }
    return py::make_tuple(constants, ratios, evidence);
}

py::tuple contingency(const Array<float>& first, const Array<float>& second, float threshold) {
    int n = static_cast<int>(first.size());
    int both = 0, secondOnly = 0, firstOnly = 0, neither = 0;
    double scoreA = 0, scoreB = 0;
    {
        const py::gil_scoped_release release;
        CDSP().farpod(values(first), values(second), n, threshold, both, secondOnly, firstOnly,
                      neither, scoreA, scoreB);
    }
    return py::make_tuple(both, secondOnly, firstOnly, neither, scoreA, scoreB);
}

template <void (Cradarpro::*convert)(float*, float*, int)>
Array<float> converted(const Array<float>& field) {
    Array<float> result = like<float>(field);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        forChunks(field.size(), [&](std::size_t at, int n) {
            (radar.*convert)(values(field) + at, out + at, n);
        });
    }
    return result;
}

}  // namespace

void bindToolkit(py::module_& module) {
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("texture", &texture, field("field"), field("mask"), py::arg("gates"),
               py::arg("rays"));
    module.def("smooth", &smooth, field("field"), field("mask"), py::arg("gates"), py::arg("rays"),
               py::arg("decibels"));
    module.def("isolated_gates", &isolatedGates, field("classes"), py::arg("gates"),
               py::arg("rays"), py::arg("most"));
    module.def("remove_isolated", &removeIsolated, field("classes"));
    module.def("signal_to_noise", &signalToNoise, field("zhh"), py::arg("spacing"),
               py::arg("radar_constant"));
    module.def("estimate_radar_constant", &estimateRadarConstant, field("zhh"), field("rhohv"),
               py::arg("spacing"));
    module.def("contingency", &contingency, field("first"), field("second"), py::arg("threshold"));
    module.def("to_decibels", &converted<&Cradarpro::ZmmtoZdb>, field("z"));
    module.def("to_linear", &converted<&Cradarpro::ZdBtoZmm>, field("dbz"));
}

}  // namespace python
