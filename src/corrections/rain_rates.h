/*
 * rain_rates.h - rain rates of many gates at once, exact to the last bit of single precision.
 *
 * Every relation is a power of ten. Rates come from short series (base/power_series.h). Gates whose
 * last bit is then uncertain, and gates with unusual values, are marked for the caller to evaluate
 * the definition.
 */
#ifndef CLUTTER_CORRECTIONS_RAIN_RATES_H
#define CLUTTER_CORRECTIONS_RAIN_RATES_H

#include <cstdint>

#include "base/kernel.h"

namespace clutter::corrections {

/* Gates of a block. */
inline constexpr int kRainBlock = base::kBlockLanes;

/* Rows of variables; null for variables that a relation does not use. */
struct RainRows {
    const float* dbz;
    const float* zdr;
    const float* kdp;

    RainRows from(int gate) const {
        const auto after = [&](const float* row) { return row != nullptr ? row + gate : nullptr; };
        return {after(dbz), after(zdr), after(kdp)};
    }
};

/* log10 rate = constant + z dBZ/10 + zdr ZDR + kdp log10 KDP */
struct PowerLaw {
    double constant, z, zdr, kdp;

    /* Whether rounding errors are far below the margin. */
    bool isModest() const;
};

/* ZDR in the exponent of a polynomial relation: c0 + c1 ZDR + c2 ZDR^2 + c3 ZDR^3 dB. The powers
 * are single precision. */
inline double polynomialOffset(const double* c, float zdr) {
    const float square = zdr * zdr;
    const float cube = zdr * zdr * zdr;
    return c[0] + c[1] * static_cast<double>(zdr) + c[2] * static_cast<double>(square) +
           c[3] * static_cast<double>(cube);
}

/* log10 of the rates of n <= kRainBlock gates; NaN where the definition is needed. */
void exponentsOf(const PowerLaw& law, const RainRows& rows, double* exponents, int n);
void exponentsOfPolynomial(const double* coefficients, const float* dbz, const float* zdr,
                           double* exponents, int n);

/* rates[j] = 10^exponents[j] rounded to float; uncertain[j] is 1 where the last bit is
 * uncertain, else 0. */
void roundRates(const double* exponents, float* rates, std::int32_t* uncertain, int n);

/* dbz[j] = 10 log10(factor rates[j]^exponent) rounded to float; uncertain as above. */
void roundReflectivities(double factor, double exponent, const float* rates, float* dbz,
                         std::int32_t* uncertain, int n);

}  // namespace clutter::corrections

#endif
