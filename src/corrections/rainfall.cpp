/*
 * Rain rate from polarimetric variables, one relation at a time.
 */
#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>

#include "clutterclassifier/Cradarpro.h"
#include "corrections/rain_rates.h"

using namespace clutter::corrections;

namespace {

constexpr int kRelations = 20;
constexpr int kCoefficientsOfRelation = 10;
using CoefficientTable = decltype(Cradarpro::coefficients);
static_assert(std::extent_v<CoefficientTable, 0> == kRelations);
static_assert(std::extent_v<CoefficientTable, 1> == kCoefficientsOfRelation);

double tenTo(double exponent) {
    return std::pow(10.0, exponent);
}

/* The variables of one gate; an unused one is 0. */
struct Gate {
    float dbz;
    float zdr;
    float kdp;

    double z() const { return tenTo(0.1 * static_cast<double>(dbz)); }
};

Gate gateOf(const RainRows& rows, int gate) {
    const auto value = [&](const float* row) { return row != nullptr ? row[gate] : 0.0f; };
    return {value(rows.dbz), value(rows.zdr), value(rows.kdp)};
}

/* A relation: its definition at one gate, and the logarithms of its rates at many gates. */
struct Relation {
    bool needsZ, needsZdr, needsKdp;
    double (*rain)(const double* c, const Gate& gate);
    void (*exponents)(const double* c, const RainRows& rows, double* exponents, int n);

    RainRows inputsOf(const RainRows& rows) const {
        return {needsZ ? rows.dbz : nullptr, needsZdr ? rows.zdr : nullptr,
                needsKdp ? rows.kdp : nullptr};
    }
    bool lacksInput(const RainRows& rows) const {
        return (needsZ && rows.dbz == nullptr) || (needsZdr && rows.zdr == nullptr) ||
               (needsKdp && rows.kdp == nullptr);
    }
};

double powerOfRatio(double z, double factor, double exponent) {
    return std::pow(z / factor, exponent);
}

PowerLaw lawOfRatio(double factor, double exponent) {
    return {-std::log10(factor) * exponent, exponent, 0.0, 0.0};
}

constexpr Relation kKnownRelations[] = {
    {true, false, false,
     [](const double* c, const Gate& gate) { return powerOfRatio(gate.z(), c[0], 1.0 / c[1]); },
     [](const double* c, const RainRows& rows, double* to, int n) {
         exponentsOf(lawOfRatio(c[0], 1.0 / c[1]), rows, to, n);
     }},
    {true, true, false,
     [](const double* c, const Gate& gate) {
         return c[0] * std::pow(gate.z(), c[1]) * tenTo(c[2] * static_cast<double>(gate.zdr));
     },
     [](const double* c, const RainRows& rows, double* to, int n) {
         exponentsOf({std::log10(c[0]), c[1], c[2], 0.0}, rows, to, n);
     }},
    {false, true, true,
     [](const double* c, const Gate& gate) {
         return c[0] * std::pow(static_cast<double>(gate.kdp), c[1]) *
                tenTo(c[2] * static_cast<double>(gate.zdr));
     },
     [](const double* c, const RainRows& rows, double* to, int n) {
         exponentsOf({std::log10(c[0]), 0.0, c[2], c[1]}, rows, to, n);
     }},
    {false, false, true,
     [](const double* c, const Gate& gate) {
         return c[0] * std::pow(static_cast<double>(gate.kdp), c[1]);
     },
     [](const double* c, const RainRows& rows, double* to, int n) {
         exponentsOf({std::log10(c[0]), 0.0, 0.0, c[1]}, rows, to, n);
     }},
    {true, true, false,
     [](const double* c, const Gate& gate) {
         return tenTo(0.1 * (static_cast<double>(gate.dbz) - polynomialOffset(c, gate.zdr)));
     },
     [](const double* c, const RainRows& rows, double* to, int n) {
         exponentsOfPolynomial(c, rows.dbz, rows.zdr, to, n);
     }},
};

/* Walks n gates in blocks: round(first gate, rates, uncertain, count) computes all values,
 * define(gate) those that are uncertain. */
template <class Round, class Define>
void inBlocks(int n, float* out, Round round, Define define) {
    float values[kRainBlock];
    std::int32_t uncertain[kRainBlock];
    for (int first = 0; first < n; first += std::min(kRainBlock, n - first)) {
        const int count = std::min(kRainBlock, n - first);
        round(first, values, uncertain, count);
        for (int j = 0; j < count; ++j) {
            if (uncertain[j] != 0) {
                values[j] = static_cast<float>(define(first + j));
            }
        }
        std::copy_n(values, count, out + first);
    }
}

}  // namespace

void Cradarpro::RainfallEstimation(float* zh, float* zdr, float* kdp, int n, int alg, float* coeffs,
                                   int ncoeffs, float* rain) {
    if (rain == nullptr) {
        return;
    }
    const bool isRow = alg >= 0 && alg < kRelations;
    if (coeffs != nullptr && isRow && ncoeffs >= 0 && ncoeffs < kCoefficientsOfRelation) {
        std::copy_n(coeffs, ncoeffs, coefficients[alg]);
    }
    if (alg < 0 || alg >= static_cast<int>(std::size(kKnownRelations))) {
        if (n > 0) {
            std::fill(rain, rain + n, 0.0f);
        }
        return;
    }
    const Relation& relation = kKnownRelations[alg];
    const double* const c = coefficients[alg];
    const RainRows rows = relation.inputsOf({zh, zdr, kdp});
    if (relation.lacksInput(rows)) {
        return;
    }
    inBlocks(
        n, rain,
        [&](int first, float* rates, std::int32_t* uncertain, int count) {
            double logarithms[kRainBlock];
            relation.exponents(c, rows.from(first), logarithms, count);
            roundRates(logarithms, rates, uncertain, count);
        },
        [&](int gate) { return relation.rain(c, gateOf(rows, gate)); });
}

void Cradarpro::ZtoR(float* rain, float* zh, int n, float a, float b) {
    if (rain == nullptr || zh == nullptr) {
        return;
    }
    const double factor = static_cast<double>(a), exponent = 1.0 / static_cast<double>(b);
    const PowerLaw law = lawOfRatio(factor, exponent);
    inBlocks(
        n, rain,
        [&](int first, float* rates, std::int32_t* uncertain, int count) {
            double logarithms[kRainBlock];
            exponentsOf(law, {zh + first, nullptr, nullptr}, logarithms, count);
            roundRates(logarithms, rates, uncertain, count);
            for (int j = 0; j < count; ++j) {
                if (zh[first + j] > threshold) {
                    continue;
                }
                rates[j] = 0.0f;
                uncertain[j] = 0;
            }
        },
        [&](int gate) {
            return powerOfRatio(tenTo(0.1 * static_cast<double>(zh[gate])), factor, exponent);
        });
}

void Cradarpro::RtoZ(float* rain, float* zh, int n, float a, float b) {
    if (rain == nullptr || zh == nullptr) {
        return;
    }
    const double factor = static_cast<double>(a), exponent = static_cast<double>(b);
    inBlocks(
        n, zh,
        [&](int first, float* dbz, std::int32_t* uncertain, int count) {
            roundReflectivities(factor, exponent, rain + first, dbz, uncertain, count);
            for (int j = 0; j < count; ++j) {
                if (rain[first + j] > 0.0f) {
                    continue;
                }
                dbz[j] = threshold;
                uncertain[j] = 0;
            }
        },
        [&](int gate) {
            const double z = factor * std::pow(static_cast<double>(rain[gate]), exponent);
            return 10.0 * std::log10(z);
        });
}
