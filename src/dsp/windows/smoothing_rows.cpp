/*
 * A ring of prepared rays, one for each ray of the window or of the scan.
 */
#include "dsp/windows/smoothing_rows.h"

#include <algorithm>
#include <cstddef>

#include "base/kernel.h"
#include "base/number.h"

namespace clutter::dsp {
namespace {

/* NaN in a masked gate must not reach a sum: select, do not multiply. Returns whether any gate is
 * unmasked. */
CLUTTER_KERNEL bool separateMasked(const float* values, const float* mask, int n,
                                   float* __restrict selected, float* __restrict lanes) {
    int any = 0;
    for (int g = 0; g < n; ++g) {
        const bool unmasked = mask[g] == 0.0f;
        selected[g] = unmasked ? values[g] : 0.0f;
        lanes[g] = unmasked ? 1.0f : 0.0f;
        any |= unmasked ? 1 : 0;
    }
    return any != 0;
}

template <class Cell>
void repeatEdges(std::vector<Cell>& cells, int pad) {
    std::fill_n(cells.begin(), pad, cells[static_cast<std::size_t>(pad)]);
    std::fill_n(cells.end() - pad, pad, *(cells.end() - pad - 1));
}

}  // namespace

SmoothingRows::SmoothingRows(const SmoothingInput& input, int pad, PowerKernel powers)
    : input_(input),
      pad_(pad),
      powers_(powers),
      capacity_(std::min<std::int64_t>(input.half.windowRays(), input.shape.nrays)),
      rows_(static_cast<std::size_t>(capacity_)) {
    const std::size_t cells =
        static_cast<std::size_t>(input.shape.ngates) + 2 * static_cast<std::size_t>(pad);
    for (SmoothingRow& row : rows_) {
        row.values.resize(cells);
        row.lanes.resize(cells);
        if (powers != nullptr) {
            row.powers.resize(cells);
        }
    }
    if (capacity_ == input.shape.nrays) {
        return;
    }
    const std::ptrdiff_t head = input.shape.offset(input.half.rays);
    headValues_.assign(input.values, input.values + head);
    headMask_.assign(input.mask, input.mask + head);
}

void SmoothingRows::prepare(std::int64_t logicalRay) {
    const auto [ngates, nrays] = input_.shape;
    const bool again = logicalRay >= nrays;
    const int ray = static_cast<int>(base::floorModulo<std::int64_t>(logicalRay, nrays));
    const std::ptrdiff_t offset = input_.shape.offset(ray);
    const float* values = (again ? headValues_.data() : input_.values) + offset;
    const float* mask = (again ? headMask_.data() : input_.mask) + offset;
    SmoothingRow& row = rows_[static_cast<std::size_t>(base::floorModulo(logicalRay, capacity_))];
    row.any =
        separateMasked(values, mask, ngates, row.values.data() + pad_, row.lanes.data() + pad_);
    repeatEdges(row.values, pad_);
    repeatEdges(row.lanes, pad_);
    if (powers_ == nullptr) {
        return;
    }
    powers_(row.values.data() + pad_, row.lanes.data() + pad_, row.powers.data() + pad_, ngates);
    repeatEdges(row.powers, pad_);
}

void SmoothingRows::moveTo(int ray) {
    const std::int64_t half = input_.half.rays;
    const bool holdsScan = capacity_ == input_.shape.nrays;
    if (holdsScan && ray == 0) {
        for (std::int64_t r = 0; r < capacity_; ++r) {
            prepare(r);
        }
    } else if (!holdsScan) {
        for (std::int64_t r = ray == 0 ? -half : ray + half; r <= ray + half; ++r) {
            prepare(r);
        }
    }
    first_ = base::floorModulo(ray - half, capacity_);
}

bool SmoothingRows::any() const {
    return std::any_of(rows_.begin(), rows_.end(), [](const SmoothingRow& row) { return row.any; });
}

}  // namespace clutter::dsp
