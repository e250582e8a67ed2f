/*
 * The toolkit's textures: the local standard deviation, with a mask and without.
 */
#include <algorithm>
#include <cstddef>

#include "base/array.h"
#include "clutterclassifier/CDSP.h"
#include "dsp/windows/texture.h"

using clutter::base::cellCount;
using clutter::dsp::FieldRows;
using clutter::dsp::FieldTexture;
using clutter::dsp::MaskWindow;
using clutter::dsp::PolarShape;
using clutter::dsp::WindowRows;

namespace {

/* The first and last half rays repeat the nearest computed ray. */
void fillRayBorder(float* out, int ngates, int nrays, int half) {
    const auto ray = [out, ngates](int r) { return out + static_cast<std::ptrdiff_t>(r) * ngates; };
    for (int k = 0; k < half; ++k) {
        std::copy_n(ray(half), ngates, ray(k));
        std::copy_n(ray(nrays - 1 - half), ngates, ray(nrays - 1 - k));
    }
}

}  // namespace

int CDSP::GetNxNPointStd(float* in, int ngates, int nrays, float* out, short N) {
    if (ngates < 1 || nrays < 1 || in == nullptr || out == nullptr) {
        return -1;
    }
    if (N <= 2 || N % 2 == 0) {
        return -1;
    }
    const int half = N / 2;
    std::fill_n(out, cellCount(ngates, nrays), 0.0f);
    if (ngates < N || nrays < N) {
        return 1;
    }
    for (int r = half; r < nrays - half; ++r) {
        const WindowRows rows{in, ngates, nrays, r - half};
        float* row = out + static_cast<std::ptrdiff_t>(r) * ngates;
        clutter::dsp::computePlainRow(rows, N, ngates, row);
        clutter::dsp::fillGateBorder(row, ngates, half);
    }
    fillRayBorder(out, ngates, nrays, half);
    return 1;
}

int CDSP::GetNxNPointStdWithMask(float* in, float* mask, int ngates, int nrays, float* out,
                                 int wgates, int wrays) {
    if (ngates < 1 || nrays < 1 || in == nullptr || mask == nullptr || out == nullptr) {
        return -1;
    }
    if (!clutter::dsp::isTextureWindow({wgates, wrays})) {
        return -1;
    }
    const PolarShape shape{ngates, nrays};
    FieldRows values(in, shape);
    FieldRows flags(mask, shape);
    MaskWindow window(flags, shape, {wgates, wrays});
    FieldTexture texture(values, window);
    for (int r = 0; r < nrays; ++r) {
        window.moveTo(r);
        texture.computeRow(out + shape.offset(r));
    }
    return 1;
}
