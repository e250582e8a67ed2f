// attenuation.cpp - attenuation of reflectivity and differential reflectivity, hot spots.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/classifier.hpp"
#include "clutterclassifier/clutterclassifier.h"
#include "loan.h"
#include "scan/process/fill_phase.h"
#include "scan/quiet_library.h"

namespace python {
namespace {

constexpr py::ssize_t kSpotRecords = 40;  // values that the library reports about a ray's hot spots

// As the attenuation stage has it.
std::vector<double> toLinear(const double* dbz, int n) {
    std::vector<double> z(static_cast<std::size_t>(n));
    std::transform(dbz, dbz + n, z.begin(), [](double v) { return std::pow(10.0, 0.1 * v); });
    return z;
}

struct StageSettings {
    int algorithm;
    double leastRise;
    int gates, rays;
    bool fillGaps;
};

// One value a ray of a record that holds it in the ray's first gate.
void takeFirstGates(const Cpluvek& record, float* out) {
    for (int r = 0; r < record.nrays; ++r) {
        out[r] = record.data[static_cast<std::size_t>(r) * static_cast<std::size_t>(record.ngates)];
    }
}

py::tuple attenuation(const Array<float>& zhh, const Array<float>& phidp,
                      const OptionalArray<float>& rhohv, const Array<float>& classes,
                      const Array<float>& freezingLevel, const Array<double>& elevation,
                      double spacing, int algorithm, double leastRise, int gates, int rays,
                      bool fillGaps, std::uint32_t seed) {
    const Size size(zhh);
    constexpr struct {
        Cpluvek Crres::*record;
        bool perRay;
    } kResults[] = {{&Crres::zhh, false},  {&Crres::ah, false},   {&Crres::ta, true},
                    {&Crres::dpdp, true},  {&Crres::alpha, true}, {&Crres::acoef, true},
                    {&Crres::bcoef, true}, {&Crres::pdp, false},  {&Crres::pdpc, false}};
    const std::vector<py::ssize_t> shape(zhh.shape(), zhh.shape() + zhh.ndim());
    const std::vector<py::ssize_t> rayShape(shape.begin(), shape.end() - 1);
    py::list results;
    std::vector<float*> outs;
    for (const auto& result : kResults) {
        Array<float> array(result.perRay ? rayShape : shape);
        outs.push_back(array.mutable_data());
        results.append(array);
    }
    {
        const py::gil_scoped_release release;
        const scan::QuietLibrary quiet;
        for (std::size_t s = 0; s < size.scans; ++s) {
            const std::size_t at = s * size.gates();
            const auto context = std::make_unique<Crres>();
            Loan loan(size, static_cast<float>(spacing), static_cast<float>(elevation.data()[s]));
            loan.copy(values(zhh) + at, context->zhh);
            loan.copy(values(phidp) + at, context->pdp);
            if (fillGaps) {
                scan::fillPhaseGaps(context->pdp.data, size.nrays, size.ngates);
            }
            loan.lend((rhohv ? values(rhohv) : values(zhh)) + at, context->rhv);
            loan.lend(values(classes) + at, context->ccl);
            loan.lend(values(freezingLevel) + at, context->fzl);
            context->attenuationalg = algorithm;
            context->minphaserise = leastRise;
            context->gates2ave_pdp = gates;
            context->rays2ave_pdp = rays;
            {
                const clutter::Seed repeatable(seed);
                context->AttenuationCorrection();
            }
            for (std::size_t k = 0; k < outs.size(); ++k) {
                const Cpluvek& record = (*context).*kResults[k].record;
                if (kResults[k].perRay) {
                    takeFirstGates(record, outs[k] + s * static_cast<std::size_t>(size.nrays));
                } else {
                    std::copy_n(record.data, size.gates(), outs[k] + at);
                }
            }
        }
    }
    return py::tuple(results);
}

Array<double> specificAttenuation(const Array<double>& dbzh, const OptionalArray<double>& phidp,
                                  const Array<double>& mask, const Array<double>& alpha,
                                  const Array<double>& a, const Array<double>& b,
                                  const Array<double>& rise, double spacingKm, int method) {
    const Size size(dbzh);
    Array<double> result = like<double>(dbzh);
    double* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        const auto ngates = static_cast<std::size_t>(size.ngates);
        for (std::size_t r = 0; r < size.scans * static_cast<std::size_t>(size.nrays); ++r) {
            const std::size_t at = r * ngates;
            const std::vector<double> z = toLinear(values(dbzh) + at, size.ngates);
            radar.Ah(z.data(), values(mask) + at, phidp ? values(phidp) + at : nullptr, size.ngates,
                     values(alpha) + at, values(a) + at, values(b) + at, rise.data()[r], spacingKm,
                     out + at, method);
        }
    }
    return result;
}

// Rays that the library does not change keep their values; their ratio is NaN.
py::tuple correctZdr(const Array<double>& zdr, const Array<double>& dbzh, const Array<double>& ah,
                     const Array<double>& mask, const Array<double>& alpha,
                     const Array<double>& rise, double spacingKm) {
    const Size size(zdr);
    Array<double> result = like<double>(zdr), ratios = like<double>(alpha);
    Array<double> paths = like<double>(alpha);
    double* out = result.mutable_data();
    double* ratio = ratios.mutable_data();
    double* path = paths.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        const auto ngates = static_cast<std::size_t>(size.ngates);
        for (std::size_t r = 0; r < size.scans * static_cast<std::size_t>(size.nrays); ++r) {
            const std::size_t at = r * ngates;
            const std::vector<double> z = toLinear(values(dbzh) + at, size.ngates);
            std::copy_n(zdr.data() + at, ngates, out + at);
            ratio[r] = std::numeric_limits<double>::quiet_NaN();
            path[r] = 0;
            radar.Adp_optimal(z.data(), values(zdr) + at, values(ah) + at, size.ngates, spacingKm,
                              alpha.data()[r], rise.data()[r], values(mask) + at, out + at,
                              ratio[r], path[r]);
        }
    }
    return py::make_tuple(result, ratios, paths);
}

// Flags of all gates, and the library's 40 values for every ray.
py::tuple hotSpots(const Array<double>& phidp, const Array<double>& dbzh,
                   const Array<double>& rhohv, const Array<double>& mask, double spacingKm) {
    const Size size(phidp);
    const std::size_t rays = size.scans * static_cast<std::size_t>(size.nrays);
    Array<bool> flags = like<bool>(phidp);
    Array<double> spots({static_cast<py::ssize_t>(rays), kSpotRecords});
    bool* out = flags.mutable_data();
    double* records = spots.mutable_data();
    {
        const py::gil_scoped_release release;
        Cradarpro radar;
        const auto ngates = static_cast<std::size_t>(size.ngates);
        std::vector<double> flagged(ngates);
        for (std::size_t r = 0; r < rays; ++r) {
            const std::size_t at = r * ngates;
            const std::vector<double> z = toLinear(values(dbzh) + at, size.ngates);
            radar.findHotSpot(values(phidp) + at, z.data(), values(rhohv) + at, values(mask) + at,
                              spacingKm, size.ngates, flagged.data(), records + r * kSpotRecords);
            std::transform(flagged.begin(), flagged.end(), out + at,
                           [](double flag) { return flag != 0; });
        }
    }
    return py::make_tuple(flags, spots);
}

// Seven values for each scan; absent fields are lent another one and mean nothing.
Array<float> zdrStatistics(const std::vector<OptionalArray<float>>& fields,
                           const OptionalArray<float>& classes, const Array<double>& elevation,
                           double spacing, float from, float to, float leastRhohv, float leastDbzh,
                           float mostDbzh) {
    constexpr Cpluvek Crres::*kRecords[] = {&Crres::zhh, &Crres::zdr, &Crres::pdp,
                                            &Crres::rhv, &Crres::vel, &Crres::wid};
    constexpr std::size_t kStatistics = 7;
    const Size size(*fields.front());
    Array<float> result({static_cast<py::ssize_t>(size.scans), py::ssize_t{kStatistics}});
    float* out = result.mutable_data();
    {
        const py::gil_scoped_release release;
        const scan::QuietLibrary quiet;
        for (std::size_t s = 0; s < size.scans; ++s) {
            const std::size_t at = s * size.gates();
            const auto context = std::make_unique<Crres>();
            Loan loan(size, static_cast<float>(spacing), static_cast<float>(elevation.data()[s]));
            for (std::size_t k = 0; k < std::size(kRecords); ++k) {
                loan.lend(values(fields[k] ? fields[k] : fields.front()) + at,
                          (*context).*kRecords[k]);
            }
            float* stats = out + s * kStatistics;
            if (classes) {
                loan.lend(values(classes) + at, context->ccl);
                context->CalculateOffsetsAtLowElevations(stats, from, to, leastRhohv, leastDbzh,
                                                         mostDbzh);
            } else {
                context->CalculateOffsetsAt90Deg(stats, from, to, leastRhohv, leastDbzh);
            }
        }
    }
    return result;
}

}  // namespace

void bindAttenuation(py::module_& module) {
    const auto field = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("attenuation", &attenuation, field("zhh"), field("phidp"), field("rhohv"),
               field("classes"), field("freezing_level"), field("elevation"), py::arg("spacing"),
               py::arg("algorithm"), py::arg("min_phase_rise"), py::arg("gates"), py::arg("rays"),
               py::arg("fill_gaps"), py::arg("seed"));
    module.def("specific_attenuation", &specificAttenuation, field("dbzh"), field("phidp"),
               field("mask"), field("alpha"), field("a"), field("b"), field("phase_rise"),
               py::arg("spacing_km"), py::arg("method"));
    module.def("correct_zdr", &correctZdr, field("zdr"), field("dbzh"),
               field("specific_attenuation"), field("mask"), field("alpha"), field("phase_rise"),
               py::arg("spacing_km"));
    module.def("hot_spots", &hotSpots, field("phidp"), field("dbzh"), field("rhohv"), field("mask"),
               py::arg("spacing_km"));
    module.def("zdr_statistics", &zdrStatistics, field("fields"), field("classes"),
               field("elevation"), py::arg("spacing"), py::arg("from_range"), py::arg("to_range"),
               py::arg("min_rhohv"), py::arg("min_dbzh"), py::arg("max_dbzh"));
}

}  // namespace python
