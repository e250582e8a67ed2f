/*
 * Exponents of the relations, and their rates with a check of the last bit.
 */
#include "corrections/rain_rates.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

#include "base/kernel.h"
#include "base/power_series.h"

namespace clutter::corrections {
namespace {

constexpr double kUseDefinition = std::numeric_limits<double>::quiet_NaN();
constexpr double kMaxConstant = 100.0;  // of log10
constexpr double kMaxSlope = 4.0;
constexpr double kMaxExponent = 30.0;  // of a rate
constexpr float kMaxZdr = 30.0f;

/*
 * Within these bounds no term exceeds 160. The error of the exponent is below 4e-13, and the
 * relative error of the rate below 1e-12; that of the definition is below 2e-15. In dB: below
 * 2e-12.
 */
constexpr double kRateMargin = 4e-12;
constexpr double kDecibelMargin = 1e-11;

bool isWithin(double value, double max) {
    return std::fabs(value) <= max;
}

CLUTTER_KERNEL void logarithmsOf(const float* values, double* __restrict logarithms, int n) {
    for (int j = 0; j < n; ++j) {
        const bool inside = values[j] >= FLT_MIN && values[j] <= FLT_MAX;
        const double value = static_cast<double>(inside ? values[j] : 1.0f);
        logarithms[j] = inside ? 0.1 * base::decibels(value) : kUseDefinition;
    }
}

CLUTTER_KERNEL void sumTerms(const PowerLaw& law, const float* dbz, const float* zdr,
                             const double* logKdp, double* __restrict exponents, int n) {
    const PowerLaw l = law;
    for (int j = 0; j < n; ++j) {
        const double tenth = 0.1 * static_cast<double>(dbz[j]);
        const double ratio = static_cast<double>(zdr[j]);
        const double sum = l.constant + l.z * tenth + l.zdr * ratio + l.kdp * logKdp[j];
        const bool inside = std::fabs(tenth) <= kMaxExponent && std::fabs(zdr[j]) <= kMaxZdr;
        exponents[j] = inside ? sum : kUseDefinition;
    }
}

}  // namespace

bool PowerLaw::isModest() const {
    return isWithin(constant, kMaxConstant) && isWithin(z, kMaxSlope) && isWithin(zdr, kMaxSlope) &&
           isWithin(kdp, kMaxSlope);
}

void exponentsOf(const PowerLaw& law, const RainRows& rows, double* exponents, int n) {
    static constexpr float kNone[kRainBlock] = {};
    static constexpr double kNoLogarithms[kRainBlock] = {};
    double logKdp[kRainBlock];
    if (!law.isModest()) {
        std::fill_n(exponents, n, kUseDefinition);
        return;
    }
    if (rows.kdp != nullptr) {
        logarithmsOf(rows.kdp, logKdp, n);
    }
    sumTerms(law, rows.dbz != nullptr ? rows.dbz : kNone, rows.zdr != nullptr ? rows.zdr : kNone,
             rows.kdp != nullptr ? logKdp : kNoLogarithms, exponents, n);
}

CLUTTER_KERNEL void exponentsOfPolynomial(const double* coefficients, const float* dbz,
                                          const float* zdr, double* __restrict exponents, int n) {
    const double c[] = {coefficients[0], coefficients[1], coefficients[2], coefficients[3]};
    for (int j = 0; j < n; ++j) {
        exponents[j] = 0.1 * (static_cast<double>(dbz[j]) - polynomialOffset(c, zdr[j]));
    }
}

/* Gates that need the definition get NaN as the upper end of their interval. */
CLUTTER_KERNEL void roundRates(const double* exponents, float* __restrict rates,
                               std::int32_t* __restrict uncertain, int n) {
    for (int j = 0; j < n; ++j) {
        const double exponent = exponents[j];
        const bool inside = std::fabs(exponent) <= kMaxExponent;
        const double rate = base::powerOfTen(inside ? exponent : 0.0);
        const double high = inside ? rate * (1.0 + kRateMargin) : kUseDefinition;
        const float low = static_cast<float>(rate * (1.0 - kRateMargin));
        rates[j] = low;
        uncertain[j] = low == static_cast<float>(high) ? 0 : 1;
    }
}

CLUTTER_KERNEL void roundReflectivities(double factor, double exponent, const float* rates,
                                        float* __restrict dbz, std::int32_t* __restrict uncertain,
                                        int n) {
    const double constant = 10.0 * std::log10(factor);
    const bool modest = isWithin(constant, 10.0 * kMaxConstant) && isWithin(exponent, kMaxSlope);
    const float maxRate = modest ? FLT_MAX : 0.0f;
    for (int j = 0; j < n; ++j) {
        const float rate = rates[j];
        const bool inside = rate >= FLT_MIN && rate <= maxRate;
        const double level =
            constant + exponent * base::decibels(static_cast<double>(inside ? rate : 1.0f));
        const double high = inside ? level + kDecibelMargin : kUseDefinition;
        const float low = static_cast<float>(level - kDecibelMargin);
        dbz[j] = low;
        uncertain[j] = low == static_cast<float>(high) ? 0 : 1;
    }
}

}  // namespace clutter::corrections
