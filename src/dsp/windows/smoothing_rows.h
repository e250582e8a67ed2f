/*
 * smoothing_rows.h - the rays of a window that moves over a polar field, prepared for summing.
 *
 * Each ray is prepared once, when it enters the window: masked values become 0 and edge gates are
 * repeated past both ends, so that window sums are plain loops over neighbouring cells. Every ray
 * is read before the result of the current ray is written: the result may overwrite the field
 * itself or the mask.
 */
#ifndef CLUTTER_DSP_WINDOWS_SMOOTHING_ROWS_H
#define CLUTTER_DSP_WINDOWS_SMOOTHING_ROWS_H

#include <cstdint>
#include <vector>

#include "dsp/windows/row_source.h"

namespace clutter::dsp {

/* A window of gates -gates .. gates by rays -rays .. rays. */
struct HalfWindow {
    int gates;
    int rays;

    std::int64_t windowGates() const { return 2 * static_cast<std::int64_t>(gates) + 1; }
    std::int64_t windowRays() const { return 2 * static_cast<std::int64_t>(rays) + 1; }
    std::int64_t members() const { return windowGates() * windowRays(); }
};

struct SmoothingInput {
    const float* values;
    const float* mask;  // 0.0 at unmasked gates
    PolarShape shape;
    HalfWindow half;
};

/* One ray of the window. Arrays begin pad gates before the ray's first gate. */
struct SmoothingRow {
    std::vector<float> values;   // 0.0 where masked
    std::vector<float> lanes;    // 1.0 where unmasked, else 0.0
    std::vector<double> powers;  // for means in decibels only
    bool any = false;            // some gate is unmasked

    int cells() const { return static_cast<int>(values.size()); }
};

class SmoothingRows {
  public:
    /* Turns a ray's values and lanes into powers. */
    using PowerKernel = void (*)(const float* values, const float* lanes, double* powers, int n);

    /* powers may be null; pad is the number of repeated gates at either end. */
    SmoothingRows(const SmoothingInput& input, int pad, PowerKernel powers);

    /* Rays must be visited in ascending order from 0, without gaps. */
    void moveTo(int ray);

    /* Row k of the window, 0 the lowest ray. */
    const SmoothingRow& row(std::int64_t k) const {
        return rows_[static_cast<std::size_t>((first_ + k) % capacity_)];
    }

    /* Whether some gate of some row is unmasked. */
    bool any() const;

    std::int64_t windowRays() const { return input_.half.windowRays(); }
    const SmoothingInput& input() const { return input_; }
    int pad() const { return pad_; }

  private:
    void prepare(std::int64_t logicalRay);

    SmoothingInput input_;
    int pad_;
    PowerKernel powers_;
    std::int64_t capacity_;
    std::int64_t first_ = 0;
    std::vector<SmoothingRow> rows_;
    std::vector<float> headValues_, headMask_;  // copies of the first rays, for the last windows
};

}  // namespace clutter::dsp

#endif
