/*
 * texture.h - the local standard deviation of a polar field, ray by ray, vectorised across gates.
 *
 * The statistic is the population standard deviation in two passes, with single-precision sums in
 * window order (rays outer, gates inner). Every lane is one gate that walks its own window in this
 * order, so that the sums are those of a plain loop, bit for bit. A masked member adds +0.0, which
 * does not change a sum that started at +0.0.
 */
#ifndef CLUTTER_DSP_WINDOWS_TEXTURE_H
#define CLUTTER_DSP_WINDOWS_TEXTURE_H

#include <cstdint>
#include <memory>
#include <vector>

#include "dsp/windows/row_source.h"

namespace clutter::dsp {

/* Window size, both odd. */
struct Window {
    int gates;
    int rays;
};

/* Whether the masked texture accepts a window: both sizes odd and positive, more than one gate. */
bool isTextureWindow(Window window);

/* The rows of a window: row k of the window around the current ray is row(k), 0 the lowest ray. */
struct WindowRows {
    const float* base;
    std::ptrdiff_t stride;
    int capacity;  // rows held; a window wider than the scan repeats them
    int first;     // index of the window's first row

    const float* row(int k) const {
        return base + (static_cast<std::int64_t>(first) + k) % capacity * stride;
    }
};

/*
 * Prepared copies of the rays around the current one. Rays wrap around the circle. A move to the
 * next ray prepares one new row.
 */
class RayRing {
  public:
    RayRing(PolarShape shape, Window window);

    /* prepare(ray, logicalRay, row) fills one row of ngates values from a ray. The logical ray
     * is counted on past both ends of the scan. */
    template <class Prepare>
    void moveTo(int ray, Prepare prepare);

    WindowRows rows() const;
    const float* row(int logicalRay) const { return slot(logicalRay); }

  private:
    float* slot(int logicalRay) const;
    int slotIndex(int logicalRay) const;

    PolarShape shape_;
    Window window_;
    int capacity_;
    int ray_ = -1;
    std::unique_ptr<float[]> storage_;
};

/* The mask around the current ray, shared by all fields with this mask: which gates are unmasked
 * (1.0 or 0.0), and the number of members of each gate's window. */
class MaskWindow {
  public:
    MaskWindow(RowSource& mask, PolarShape shape, Window window);

    void moveTo(int ray);

    PolarShape shape() const { return shape_; }
    Window window() const { return window_; }
    int ray() const { return ray_; }
    WindowRows lanes() const { return lanes_.rows(); }
    /* Which gates of a ray within the window are unmasked. */
    const float* lanesOf(int logicalRay) const { return lanes_.row(logicalRay); }
    const float* own() const { return lanesOf(ray_); }
    const float* memberCounts() const { return counts_.data(); }
    /* False when no gate of the current ray is unmasked: its texture is 0 throughout. */
    bool any() const { return any_; }

  private:
    RowSource& mask_;
    PolarShape shape_;
    Window window_;
    RayRing lanes_;
    std::vector<float> counts_;
    int ray_ = -1;
    bool any_ = false;
};

/* The texture of one field under a mask, for the ray that the mask window is at. */
class FieldTexture {
  public:
    FieldTexture(RowSource& field, const MaskWindow& mask);

    /* Writes ngates values: 0.0 where the gate itself is masked; the border repeats the nearest
     * computed gate. */
    void computeRow(float* out);

  private:
    RowSource& field_;
    const MaskWindow& mask_;
    RayRing selected_;
};

/* The unmasked texture of gates half .. ngates - half - 1 of one ray (no border), size x size
 * window. */
void computePlainRow(const WindowRows& rows, int size, int ngates, float* out);

/* Repeats the nearest computed value in the first and last half gates of a row. */
void fillGateBorder(float* row, int ngates, int half);

}  // namespace clutter::dsp

#endif
