// rain.cpp - rain rates from gates, and from scans below the melting layer.
#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"

namespace python {
namespace {

Array<float> rainRate(const OptionalArray<float>& zhh, const OptionalArray<float>& zdr,
                      const OptionalArray<float>& kdp, int relation,
                      const std::vector<double>& coefficients) {
    const Array<float>& any = zhh ? *zhh : *kdp;
    Array<float> result = like<float>(any);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        std::copy(coefficients.begin(), coefficients.end(), radar.coefficients[relation]);
        const auto from = [](float* field, std::size_t at) { return field ? field + at : nullptr; };
        forChunks(any.size(), [&](std::size_t at, int n) {
            radar.RainfallEstimation(from(values(zhh), at), from(values(zdr), at),
                                     from(values(kdp), at), n, relation, nullptr, 0, out + at);
        });
    }
    return result;
}

Array<float> hybridRainRate(const Array<float>& zhh, const Array<float>& zdr,
                            const Array<float>& freezingLevel, const Array<double>& elevation,
                            double spacing) {
    const Size size(zhh);
    Array<float> result = like<float>(zhh);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        for (std::size_t s = 0; s < size.scans; ++s) {
            const std::size_t at = s * size.gates();
            const auto context = std::make_unique<Crres>();
            Loan loan(size, static_cast<float>(spacing), static_cast<float>(elevation.data()[s]));
            loan.lend(values(zhh) + at, context->zhh);
            loan.lend(values(zdr) + at, context->zdr);
            loan.lend(values(freezingLevel) + at, context->fzl);
            loan.lend(out + at, context->rain);
            context->PrecipitationEstimation(-1);
        }
    }
    return result;
}

Array<float> zToRain(const Array<float>& zhh, float a, float b, float threshold) {
    Array<float> result = like<float>(zhh);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        radar.threshold = threshold;
        forChunks(zhh.size(),
                  [&](std::size_t at, int n) { radar.ZtoR(out + at, values(zhh) + at, n, a, b); });
    }
    return result;
}

Array<float> rainToZ(const Array<float>& rain, float a, float b, float noRain) {
    Array<float> result = like<float>(rain);
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        radar.threshold = noRain;
        forChunks(rain.size(),
                  [&](std::size_t at, int n) { radar.RtoZ(values(rain) + at, out + at, n, a, b); });
    }
    return result;
}

}  // namespace

void bindRain(py::module_& module) {
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("rain_rate", &rainRate, field("zhh"), field("zdr"), field("kdp"),
               py::arg("relation"), py::arg("coefficients"));
    module.def("hybrid_rain_rate", &hybridRainRate, field("zhh"), field("zdr"),
               field("freezing_level"), field("elevation"), py::arg("spacing"));
    module.def("z_to_rain", &zToRain, field("zhh"), py::arg("a"), py::arg("b"),
               py::arg("threshold"));
    module.def("rain_to_z", &rainToZ, field("rain"), py::arg("a"), py::arg("b"),
               py::arg("no_rain"));
}

}  // namespace python
