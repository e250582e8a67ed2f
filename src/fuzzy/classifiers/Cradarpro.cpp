/*
 * The algorithms class: its constants, and conversions of reflectivity.
 */
#include "clutterclassifier/Cradarpro.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr float kNoRainDbz = -32.0f;

/* Coefficients of the rainfall relations; see the member's comment for the rows. */
constexpr double kCoefficients[][4] = {
    {200.0, 1.6, 0.0, 0.0},  {0.01583, 0.8349, -0.3732, 0.0},    {49.2144, 0.9429, -0.2731, 0.0},
    {20.47, 0.75, 0.0, 0.0}, {18.996, 16.9758, -9.4325, 2.1542},
};

}  // namespace

Cradarpro::Cradarpro() : threshold(kNoRainDbz), coefficients{} {
    for (std::size_t row = 0; row < std::size(kCoefficients); ++row) {
        std::copy(std::begin(kCoefficients[row]), std::end(kCoefficients[row]), coefficients[row]);
    }
}

Cradarpro::~Cradarpro() {}

void Cradarpro::ZmmtoZdb(float* in, float* out, int n) {
    if (in == nullptr || out == nullptr) {
        return;
    }
    for (int i = 0; i < n; ++i) {
        out[i] = static_cast<float>(10.0 * std::log10(static_cast<double>(in[i])));
    }
}

void Cradarpro::ZdBtoZmm(float* in, float* out, int n) {
    if (in == nullptr || out == nullptr) {
        return;
    }
    for (int i = 0; i < n; ++i) {
        out[i] = static_cast<float>(std::pow(10.0, 0.1 * static_cast<double>(in[i])));
    }
}
