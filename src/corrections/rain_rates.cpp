#include "corrections/rain_rates.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>

#include "base/kernel.h"
#include "base/power_series.h"

namespace clutter::corrections {
namespace {

constexpr double kAskDefinition = std::numeric_limits<double>::quiet_NaN();
constexpr double kMostConstant = 100.0;  // of log10
constexpr double kMostSlope = 4.0;
constexpr double kMostExponent = 30.0;  // of a rate
constexpr float kMostZdr = 30.0f;

/*
 * Within these bounds no term exceeds 160, so that the exponent is off by less than 4e-13 and the
 * rate by less than 1e-12 of it; the definition's by less than 2e-15. In dB: less than 2e-12.
 */
constexpr double kRateMargin = 4e-12;
constexpr double kDecibelMargin = 1e-11;

bool isWithin(double value, double most) {
    return std::fabs(value) <= most;
}

CLUTTER_KERNEL void logarithmsOf(const float* values, double* __restrict logarithms, int n) {
    for (int j = 0; j < n; ++j) {
        const bool inside = values[j] >= FLT_MIN && values[j] <= FLT_MAX;
        const double value = static_cast<double>(inside ? values[j] : 1.0f);
        logarithms[j] = inside ? 0.1 * base::decibels(value) : kAskDefinition;
    }
}

CLUTTER_KERNEL void sumTerms(const PowerLaw& law, const float* dbz, const float* zdr,
                             const double* logKdp, double* __restrict exponents, int n) {
    const PowerLaw l = law;
    for (int j = 0; j < n; ++j) {
        const double tenth = 0.1 * static_cast<double>(dbz[j]);
        const double ratio = static_cast<double>(zdr[j]);
        const double sum = l.constant + l.z * tenth + l.zdr * ratio + l.kdp * logKdp[j];
        const bool inside = std::fabs(tenth) <= kMostExponent && std::fabs(zdr[j]) <= kMostZdr;
        exponents[j] = inside ? sum : kAskDefinition;
    }
}

}  // namespace

bool PowerLaw::isModest() const {
    return isWithin(constant, kMostConstant) && isWithin(z, kMostSlope) &&
           isWithin(zdr, kMostSlope) && isWithin(kdp, kMostSlope);
}

void exponentsOf(const PowerLaw& law, const RainRows& rows, double* exponents, int n) {
    static constexpr float kNone[kRainBlock] = {};
    static constexpr double kNoLogarithms[kRainBlock] = {};
    double logKdp[kRainBlock];
    if (!law.isModest()) {
        std::fill_n(exponents, n, kAskDefinition);
        return;
    }
    if (rows.kdp != nullptr) logarithmsOf(rows.kdp, logKdp, n);
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

/* Gates that are left to the definition get an interval that has no end. */
CLUTTER_KERNEL void settleRates(const double* exponents, float* __restrict rates,
                                std::int32_t* __restrict open, int n) {
    for (int j = 0; j < n; ++j) {
        const double exponent = exponents[j];
        const bool inside = std::fabs(exponent) <= kMostExponent;
        const double rate = base::powerOfTen(inside ? exponent : 0.0);
        const double most = inside ? rate * (1.0 + kRateMargin) : kAskDefinition;
        const float low = static_cast<float>(rate * (1.0 - kRateMargin));
        rates[j] = low;
        open[j] = low == static_cast<float>(most) ? 0 : 1;
    }
}

CLUTTER_KERNEL void settleReflectivities(double factor, double exponent, const float* rates,
                                         float* __restrict dbz, std::int32_t* __restrict open,
                                         int n) {
    const double constant = 10.0 * std::log10(factor);
    const bool modest = isWithin(constant, 10.0 * kMostConstant) && isWithin(exponent, kMostSlope);
    const float mostRate = modest ? FLT_MAX : 0.0f;
    for (int j = 0; j < n; ++j) {
        const float rate = rates[j];
        const bool inside = rate >= FLT_MIN && rate <= mostRate;
        const double level =
            constant + exponent * base::decibels(static_cast<double>(inside ? rate : 1.0f));
        const double most = inside ? level + kDecibelMargin : kAskDefinition;
        const float low = static_cast<float>(level - kDecibelMargin);
        dbz[j] = low;
        open[j] = low == static_cast<float>(most) ? 0 : 1;
    }
}

}  // namespace clutter::corrections
