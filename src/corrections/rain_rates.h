/*
 * rain_rates.h - rain rates of many gates at once, settled to the last bit of single precision.
 *
 * Every relation is a power of ten. Rates are taken from short series (base/power_series.h); the
 * gates whose last bit these leave open, or whose values are out of the ordinary, are marked and
 * left to the definition.
 */
#ifndef CLUTTER_CORRECTIONS_RAIN_RATES_H
#define CLUTTER_CORRECTIONS_RAIN_RATES_H

#include <cstdint>

namespace clutter::corrections {

/* Gates that are looked at together. */
inline constexpr int kRainBlock = 256;

/* Rows of variables; one that does not enter is null. */
struct RainRows {
    const float* dbz;
    const float* zdr;
    const float* kdp;

    RainRows from(int gate) const {
        const auto behind = [&](const float* row) { return row != nullptr ? row + gate : nullptr; };
        return {behind(dbz), behind(zdr), behind(kdp)};
    }
};

/* log10 rate = constant + z dBZ/10 + zdr ZDR + kdp log10 KDP */
struct PowerLaw {
    double constant, z, zdr, kdp;

    /* Whether rounding errors stay far inside the margin. */
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

/* log10 of the rates of n <= kRainBlock gates; NaN where the definition has to be asked. */
void exponentsOf(const PowerLaw& law, const RainRows& rows, double* exponents, int n);
void exponentsOfPolynomial(const double* coefficients, const float* dbz, const float* zdr,
                           double* exponents, int n);

/* rates[j] = 10^exponents[j] rounded to float; open[j] is 1 where the last bit is not certain. */
void settleRates(const double* exponents, float* rates, std::int32_t* open, int n);

/* dbz[j] = 10 log10(factor rates[j]^exponent) rounded to float; open as above. */
void settleReflectivities(double factor, double exponent, const float* rates, float* dbz,
                          std::int32_t* open, int n);

}  // namespace clutter::corrections

#endif
