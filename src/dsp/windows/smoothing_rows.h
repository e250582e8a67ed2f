/*
 * smoothing_rows.h - the rays of a window that moves over a polar field, ready for summing.
 *
 * Each ray is prepared once when it enters the window: masked values become 0, edge gates are
 * repeated beyond both ends, so that window sums are plain loops over neighbouring cells. A ray is
 * read before the window's own ray can have been overwritten: the result may go into the field
 * itself, or into the mask.
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
    const float* mask;  // a gate takes part where this is 0.0
    PolarShape shape;
    HalfWindow half;
};

/* One ray of the window; arrays begin pad gates before the ray's first gate. */
struct SmoothingRow {
    std::vector<float> values;   // 0.0 where masked
    std::vector<float> lanes;    // 1.0 where the gate takes part, else 0.0
    std::vector<double> powers;  // for means in decibels only
    bool any = false;            // some gate takes part

    int cells() const { return static_cast<int>(values.size()); }
};

class SmoothingRows {
  public:
    /* Turns a ray's values and lanes into powers. */
    using PowerKernel = void (*)(const float* values, const float* lanes, double* powers, int n);

    /* powers may be null; pad is the number of repeated gates at either end. */
    SmoothingRows(const SmoothingInput& input, int pad, PowerKernel powers);

    /* Rays are visited from 0 upwards, without gaps. */
    void moveTo(int ray);

    /* Row k of the window, 0 the lowest ray. */
    const SmoothingRow& row(std::int64_t k) const {
        return rows_[static_cast<std::size_t>((first_ + k) % capacity_)];
    }

    /* Some gate of some row takes part. */
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
    std::vector<float> headValues_, headMask_;  // the first rays, which the last ones meet again
};

}  // namespace clutter::dsp

#endif
