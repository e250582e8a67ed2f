/*
 * The two passes of a deviation, in blocks of gates: the mean, then the squares.
 */
#include "dsp/windows/texture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/kernel.h"
#include "base/number.h"

namespace clutter::dsp {
namespace {

using base::kBlockLanes;

struct RowBlock {
    const WindowRows& values;
    const WindowRows& lanes;
    int windowGates;
    int windowRays;
};

CLUTTER_KERNEL void markUnmasked(const float* mask, float* lanes, int n) {
    for (int g = 0; g < n; ++g) {
        lanes[g] = mask[g] == 0.0f ? 1.0f : 0.0f;
    }
}

CLUTTER_KERNEL bool anyUnmasked(const float* lanes, int n) {
    int any = 0;
    for (int g = 0; g < n; ++g) {
        any |= lanes[g] != 0.0f ? 1 : 0;
    }
    return any != 0;
}

/* NaN in a masked gate must not reach a sum: select, do not multiply. */
CLUTTER_KERNEL void selectUnmasked(const float* field, const float* lanes, float* selected, int n) {
    for (int g = 0; g < n; ++g) {
        selected[g] = lanes[g] != 0.0f ? field[g] : 0.0f;
    }
}

/* sums[j] = the window sum of n gates in row order. Also counts members, exactly so in float. */
CLUTTER_KERNEL void sumWindow(const WindowRows& rows, int windowGates, int windowRays, int gate,
                              int n, float* __restrict sums) {
    for (int j = 0; j < n; ++j) {
        sums[j] = 0.0f;
    }
    for (int k = 0; k < windowRays; ++k) {
        const float* row = rows.row(k) + gate;
        for (int d = 0; d < windowGates; ++d) {
            for (int j = 0; j < n; ++j) {
                sums[j] += row[j + d];
            }
        }
    }
}

CLUTTER_KERNEL void divideAll(float* __restrict sums, const float* __restrict counts, int n) {
    for (int j = 0; j < n; ++j) {
        sums[j] = sums[j] / counts[j];
    }
}

/* squares[j] = the window sum of squared differences from means[j] over unmasked members. */
CLUTTER_KERNEL void sumSquares(const RowBlock& block, int gate, int n,
                               const float* __restrict means, float* __restrict squares) {
    for (int j = 0; j < n; ++j) {
        squares[j] = 0.0f;
    }
    for (int k = 0; k < block.windowRays; ++k) {
        const float* row = block.values.row(k) + gate;
        const float* lane = block.lanes.row(k) + gate;
        for (int d = 0; d < block.windowGates; ++d) {
            for (int j = 0; j < n; ++j) {
                const float difference = row[j + d] - means[j];
                squares[j] += lane[j + d] != 0.0f ? difference * difference : 0.0f;
            }
        }
    }
}

/* The float square root equals the double one rounded to float. */
CLUTTER_KERNEL void finish(const float* __restrict squares, const float* __restrict counts,
                           const float* __restrict own, int n, float* __restrict out) {
    for (int j = 0; j < n; ++j) {
        const float deviation = std::sqrt(squares[j] / counts[j]);
        out[j] = own[j] != 0.0f ? deviation : 0.0f;
    }
}

/*
 * The default window of 5 gates by 3 rays, in registers: the same sums in the same order as in the
 * general kernels above.
 */
CLUTTER_KERNEL void computeFiveByThree(const RowBlock& block, int gate, int n,
                                       const float* __restrict counts, const float* __restrict own,
                                       float* __restrict out) {
    const float* v0 = block.values.row(0) + gate;
    const float* v1 = block.values.row(1) + gate;
    const float* v2 = block.values.row(2) + gate;
    const float* m0 = block.lanes.row(0) + gate;
    const float* m1 = block.lanes.row(1) + gate;
    const float* m2 = block.lanes.row(2) + gate;
    for (int j = 0; j < n; ++j) {
        float sum = 0.0f;
        for (int d = 0; d < 5; ++d) {
            sum += v0[j + d];
        }
        for (int d = 0; d < 5; ++d) {
            sum += v1[j + d];
        }
        for (int d = 0; d < 5; ++d) {
            sum += v2[j + d];
        }
        const float mean = sum / counts[j];
        float squares = 0.0f;
        for (int d = 0; d < 5; ++d) {
            const float difference = v0[j + d] - mean;
            squares += m0[j + d] != 0.0f ? difference * difference : 0.0f;
        }
        for (int d = 0; d < 5; ++d) {
            const float difference = v1[j + d] - mean;
            squares += m1[j + d] != 0.0f ? difference * difference : 0.0f;
        }
        for (int d = 0; d < 5; ++d) {
            const float difference = v2[j + d] - mean;
            squares += m2[j + d] != 0.0f ? difference * difference : 0.0f;
        }
        const float deviation = std::sqrt(squares / counts[j]);
        out[j] = own[j] != 0.0f ? deviation : 0.0f;
    }
}

/* Texture of n <= kBlockLanes gates whose windows start at gate. */
void computeBlock(const RowBlock& block, int gate, int n, const float* counts, const float* own,
                  float* out) {
    float means[kBlockLanes];
    float squares[kBlockLanes];
    sumWindow(block.values, block.windowGates, block.windowRays, gate, n, means);
    divideAll(means, counts, n);
    sumSquares(block, gate, n, means, squares);
    finish(squares, counts, own, n, out);
}

}  // namespace

bool isTextureWindow(Window window) {
    const auto odd = [](int size) { return size > 0 && size % 2 == 1; };
    return odd(window.gates) && odd(window.rays) && (window.gates > 1 || window.rays > 1);
}

RayRing::RayRing(PolarShape shape, Window window)
    : shape_(shape),
      window_(window),
      capacity_(std::min(window.rays, shape.nrays)),
      storage_(
          new float[static_cast<std::size_t>(capacity_) * static_cast<std::size_t>(shape.ngates)]) {
}

int RayRing::slotIndex(int logicalRay) const {
    return base::floorModulo(logicalRay, capacity_);
}

float* RayRing::slot(int logicalRay) const {
    return storage_.get() + static_cast<std::ptrdiff_t>(slotIndex(logicalRay)) * shape_.ngates;
}

template <class Prepare>
void RayRing::moveTo(int ray, Prepare prepare) {
    const int half = window_.rays / 2;
    const bool holdsScan = capacity_ < window_.rays;  // every ray has its own slot
    const bool next = ray_ >= 0 && ray == ray_ + 1;
    const int first = holdsScan ? 0 : next ? ray + half : ray - half;
    const int last = holdsScan ? capacity_ - 1 : ray + half;
    if (!holdsScan || ray_ < 0) {
        for (int r = first; r <= last; ++r) {
            prepare(base::floorModulo(r, shape_.nrays), r, slot(r));
        }
    }
    ray_ = ray;
}

WindowRows RayRing::rows() const {
    return {storage_.get(), shape_.ngates, capacity_, slotIndex(ray_ - window_.rays / 2)};
}

MaskWindow::MaskWindow(RowSource& mask, PolarShape shape, Window window)
    : mask_(mask),
      shape_(shape),
      window_(window),
      lanes_(shape, window),
      counts_(static_cast<std::size_t>(shape.ngates), 0.0f) {}

void MaskWindow::moveTo(int ray) {
    ray_ = ray;
    lanes_.moveTo(
        ray, [this](int r, int, float* row) { markUnmasked(mask_.row(r), row, shape_.ngates); });
    any_ = anyUnmasked(own(), shape_.ngates);
    if (!any_) {
        return;
    }
    const int computed = shape_.ngates - window_.gates + 1;
    for (int g = 0; g < computed; g += kBlockLanes) {
        sumWindow(lanes_.rows(), window_.gates, window_.rays, g,
                  std::min(kBlockLanes, computed - g), counts_.data() + window_.gates / 2 + g);
    }
}

FieldTexture::FieldTexture(RowSource& field, const MaskWindow& mask)
    : field_(field), mask_(mask), selected_(mask.shape(), mask.window()) {}

void FieldTexture::computeRow(float* out) {
    const int ngates = mask_.shape().ngates;
    const Window window = mask_.window();
    std::fill(out, out + ngates, 0.0f);
    if (!mask_.any() || ngates < window.gates) {
        return;
    }
    selected_.moveTo(mask_.ray(), [this, ngates](int r, int logicalRay, float* row) {
        selectUnmasked(field_.row(r), mask_.lanesOf(logicalRay), row, ngates);
    });
    const int half = window.gates / 2;
    const int computed = ngates - 2 * half;
    const WindowRows values = selected_.rows();
    const WindowRows lanes = mask_.lanes();
    const RowBlock block{values, lanes, window.gates, window.rays};
    const auto compute = window.gates == 5 && window.rays == 3 ? computeFiveByThree : computeBlock;
    for (int g = 0; g < computed; g += kBlockLanes) {
        const int at = g + half;
        if (!anyUnmasked(mask_.own() + at, std::min(kBlockLanes, computed - g))) {
            continue;
        }
        compute(block, g, std::min(kBlockLanes, computed - g), mask_.memberCounts() + at,
                mask_.own() + at, out + at);
    }
    fillGateBorder(out, ngates, half);
}

void computePlainRow(const WindowRows& rows, int size, int ngates, float* out) {
    const std::vector<float> ones(static_cast<std::size_t>(ngates), 1.0f);
    const std::vector<float> counts(kBlockLanes,
                                    static_cast<float>(static_cast<long long>(size) * size));
    const WindowRows lanes{ones.data(), 0, 1, 0};
    const RowBlock block{rows, lanes, size, size};
    const int computed = ngates - size + 1;
    for (int g = 0; g < computed; g += kBlockLanes) {
        computeBlock(block, g, std::min(kBlockLanes, computed - g), counts.data(), ones.data(),
                     out + g + size / 2);
    }
}

void fillGateBorder(float* row, int ngates, int half) {
    std::fill(row, row + half, row[half]);
    std::fill(row + ngates - half, row + ngates, row[ngates - 1 - half]);
}

}  // namespace clutter::dsp
