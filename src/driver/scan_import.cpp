/*
 * Rows of doubles as floats, and noise flags packed into bytes.
 */
#include "driver/scan_import.h"

#include "base/array.h"
#include "base/kernel.h"
#include "driver/echo_class.h"
#include "driver/gate_kernels.h"

namespace clutter::driver {
namespace {

CLUTTER_KERNEL void packFlags(const float* __restrict cls, std::uint8_t* __restrict flags, int n) {
    for (int g = 0; g < n; ++g) {
        flags[g] = cls[g] == kNoiseClass ? 1 : 0;
    }
}

CLUTTER_KERNEL void unpackFlags(const std::uint8_t* __restrict flags, float* __restrict cls,
                                int n) {
    for (int g = 0; g < n; ++g) {
        cls[g] = flags[g] != 0 ? kNoiseClass : kPrecipitationClass;
    }
}

}  // namespace

NarrowedRows::NarrowedRows(const double* field, dsp::PolarShape shape)
    : field_(field), shape_(shape) {
    if (field_ != nullptr) {
        row_.resize(static_cast<std::size_t>(shape.ngates));
    }
}

const float* NarrowedRows::row(int ray) {
    if (ray != held_) {
        narrow(field_ + shape_.offset(ray), row_.data(), shape_.ngates);
    }
    held_ = ray;
    return row_.data();
}

NoiseFlags::NoiseFlags(dsp::PolarShape shape)
    : shape_(shape),
      isNoise_(base::cellCount(shape.ngates, shape.nrays)),
      row_(static_cast<std::size_t>(shape.ngates)) {}

std::size_t NoiseFlags::flag(dsp::RowSource& reflectivity, const NoiseTest& test) {
    const int n = shape_.ngates;
    const std::vector<float> losses = rangeLossesDb(n, test.gateSizeM);
    std::vector<float> snr(static_cast<std::size_t>(n));
    std::size_t echoes = 0;
    for (int r = 0; r < shape_.nrays; ++r) {
        signalToNoise(reflectivity.row(r), losses.data(), test.radarConstantDb, snr.data(), n);
        markNoise(snr.data(), test.minSnrDb, row_.data(), n);
        packFlags(row_.data(), isNoise_.data() + shape_.offset(r), n);
        echoes += static_cast<std::size_t>(countEchoes(row_.data(), n));
    }
    return echoes;
}

const float* NoiseFlags::row(int ray) {
    unpackFlags(isNoise_.data() + shape_.offset(ray), row_.data(), shape_.ngates);
    return row_.data();
}

}  // namespace clutter::driver
