// phase.cpp - the differential phase: its offset, folding and gaps.
#include <algorithm>
#include <cstddef>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"
#include "scan/process/fill_phase.h"

namespace python {
namespace {

// One offset a scan, from classes when byClass, else from the correlation.
Array<float> systemPhase(const Array<float>& phidp, const Array<float>& quality, int gates,
                         bool byClass) {
    const Size size(phidp);
    Array<float> result(static_cast<py::ssize_t>(size.scans));
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        for (std::size_t s = 0; s < size.scans; ++s) {
            float* phase = values(phidp) + s * size.gates();
            float* by = values(quality) + s * size.gates();
            out[s] = byClass
                         ? radar.GetInitialPDP_usingCPI(phase, by, size.ngates, size.nrays, gates)
                         : radar.GetInitialPDP(phase, by, size.ngates, size.nrays, gates);
        }
    }
    return result;
}

Array<float> unfoldPhase(const Array<float>& phidp, const Array<float>& classes) {
    const Size size(phidp);
    Array<float> result = like<float>(phidp);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        std::copy_n(phidp.data(), size.scans * size.gates(), out);
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            radar.CorrectPDPFolding(out + at, values(classes) + at, size.ngates, size.nrays);
        }
    }
    return result;
}

Array<float> closePhaseGaps(const Array<float>& phidp) {
    const Size size(phidp);
    Array<float> result = like<float>(phidp);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        std::copy_n(phidp.data(), size.scans * size.gates(), out);
        for (std::size_t at = 0; at < size.scans * size.gates(); at += size.gates()) {
            scan::fillPhaseGaps(out + at, size.nrays, size.ngates);
        }
    }
    return result;
}

// Calls fill(values, mask, result) for every ray.
template <class Fill>
Array<double> filled(const Array<double>& phidp, const Array<double>& mask, Fill fill) {
    Array<double> result = like<double>(phidp);
    double* out = result.mutable_data();
    const auto ngates = static_cast<std::size_t>(phidp.shape(phidp.ndim() - 1));
    const auto count = static_cast<std::size_t>(phidp.size());
    {
        const py::gil_scoped_release release;
        for (std::size_t at = 0; at < count; at += ngates) {
            fill(values(phidp) + at, values(mask) + at, static_cast<int>(ngates), out + at);
        }
    }
    return result;
}

Array<double> fillPhase(const Array<double>& phidp, const Array<double>& mask) {
    Cradarpro radar;
    return filled(phidp, mask, [&](const double* in, const double* gaps, int n, double* out) {
        radar.interpPDP(in, gaps, n, out);
    });
}

Array<double> extendPhase(const Array<double>& phidp, const Array<double>& mask, int gates,
                          int average) {
    Cradarpro radar;
    return filled(phidp, mask, [&](double* in, double* gaps, int n, double* out) {
        radar.CompletePhidp(in, out, n, gates, average, gaps);
    });
}

}  // namespace

void bindPhase(py::module_& module) {
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("system_phase", &systemPhase, field("phidp"), field("quality"), py::arg("gates"),
               py::arg("by_class"));
    module.def("unfold_phase", &unfoldPhase, field("phidp"), field("classes"));
    module.def("close_phase_gaps", &closePhaseGaps, field("phidp"));
    module.def("fill_phase", &fillPhase, field("phidp"), field("mask"));
    module.def("extend_phase", &extendPhase, field("phidp"), field("mask"), py::arg("gates"),
               py::arg("average"));
}

}  // namespace python
