/*
 * Rain rate from polarimetric variables, one relation at a time.
 */
#include <algorithm>
#include <cmath>
#include <iterator>

#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr int kRelations = 20;
constexpr int kCoefficientsOfRelation = 10;

/* The variables of one gate; an absent one is 0 and not used. */
struct Gate {
    float dbz;
    float zdr;
    float kdp;

    double z() const { return std::pow(10.0, 0.1 * static_cast<double>(dbz)); }
};

double tenTo(double exponent) {
    return std::pow(10.0, exponent);
}

double fromZ(const double* c, const Gate& gate) {
    return std::pow(gate.z() / c[0], 1.0 / c[1]);
}

double fromZZdr(const double* c, const Gate& gate) {
    return c[0] * std::pow(gate.z(), c[1]) * tenTo(c[2] * static_cast<double>(gate.zdr));
}

double fromKdpZdr(const double* c, const Gate& gate) {
    return c[0] * std::pow(static_cast<double>(gate.kdp), c[1]) *
           tenTo(c[2] * static_cast<double>(gate.zdr));
}

double fromKdp(const double* c, const Gate& gate) {
    return c[0] * std::pow(static_cast<double>(gate.kdp), c[1]);
}

/* The powers of ZDR are single precision. */
double fromZdrPolynomial(const double* c, const Gate& gate) {
    const float square = gate.zdr * gate.zdr;
    const float cube = gate.zdr * gate.zdr * gate.zdr;
    const double offset = c[0] + c[1] * static_cast<double>(gate.zdr) +
                          c[2] * static_cast<double>(square) + c[3] * static_cast<double>(cube);
    return tenTo(0.1 * (static_cast<double>(gate.dbz) - offset));
}

struct Relation {
    bool needsZ, needsZdr, needsKdp;
    double (*rain)(const double* coefficients, const Gate& gate);
};

constexpr Relation kKnownRelations[] = {
    {true, false, false, fromZ},
    {true, true, false, fromZZdr},
    {false, true, true, fromKdpZdr},
    {false, false, true, fromKdp},
    {true, true, false, fromZdrPolynomial},
};

}  // namespace

void Cradarpro::RainfallEstimation(float* zh, float* zdr, float* kdp, int n, int alg, float* coeffs,
                                   int ncoeffs, float* rain) {
    if (rain == nullptr) return;
    const bool isRow = alg >= 0 && alg < kRelations;
    if (coeffs != nullptr && isRow && ncoeffs >= 0 && ncoeffs < kCoefficientsOfRelation) {
        std::copy_n(coeffs, ncoeffs, coefficients[alg]);
    }
    if (alg < 0 || alg >= static_cast<int>(std::size(kKnownRelations))) {
        if (n > 0) std::fill(rain, rain + n, 0.0f);
        return;
    }
    const Relation& relation = kKnownRelations[alg];
    if (relation.needsZ && zh == nullptr) return;
    if (relation.needsZdr && zdr == nullptr) return;
    if (relation.needsKdp && kdp == nullptr) return;
    const auto valueAt = [](const float* field, int i) { return field ? field[i] : 0.0f; };
    for (int i = 0; i < n; ++i) {
        const Gate gate{valueAt(zh, i), valueAt(zdr, i), valueAt(kdp, i)};
        rain[i] = static_cast<float>(relation.rain(coefficients[alg], gate));
    }
}

void Cradarpro::ZtoR(float* rain, float* zh, int n, float a, float b) {
    if (rain == nullptr || zh == nullptr) return;
    const double factor = static_cast<double>(a), exponent = 1.0 / static_cast<double>(b);
    for (int i = 0; i < n; ++i) {
        if (!(zh[i] > threshold)) {
            rain[i] = 0.0f;
            continue;
        }
        const double z = tenTo(0.1 * static_cast<double>(zh[i]));
        rain[i] = static_cast<float>(std::pow(z / factor, exponent));
    }
}

void Cradarpro::RtoZ(float* rain, float* zh, int n, float a, float b) {
    if (rain == nullptr || zh == nullptr) return;
    const double factor = static_cast<double>(a), exponent = static_cast<double>(b);
    for (int i = 0; i < n; ++i) {
        if (!(rain[i] > 0.0f)) {
            zh[i] = threshold;
            continue;
        }
        const double z = factor * std::pow(static_cast<double>(rain[i]), exponent);
        zh[i] = static_cast<float>(10.0 * std::log10(z));
    }
}
