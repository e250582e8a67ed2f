/*
 * ratio_cells.h - the log ratio of one input's degrees in two rules, looked up instead of computed.
 *
 * The input's range is cut into cells; a cell holds the middle of the log ratio's range over it. A
 * cell whose range is too wide, or whose degrees leave 2^-100 .. 2^100, holds NaN.
 */
#ifndef CLUTTER_FUZZY_RATIO_CELLS_H
#define CLUTTER_FUZZY_RATIO_CELLS_H

#include <memory>
#include <vector>

#include "fuzzy/engine/cell_grid.h"
#include "fuzzy/engine/term.h"

namespace clutter::fuzzy {

class RatioCells {
  public:
    static constexpr int kMaxElements = 256;

    /* Null when the terms are neither tables nor plain values, or their range cannot be cut. */
    [[nodiscard]] static std::shared_ptr<const RatioCells> make(const Term& rule0,
                                                                const Term& rule1);

    /* Adds the log ratio, to within widestHalf(), or NaN to n <= kMaxElements scores. */
    void add(const float* x, float* scores, int n) const;

    float widestHalf() const { return widestHalf_; }

  private:
    static constexpr int kCells = 2048;

    RatioCells() = default;
    bool fill(const Term& rule0, const Term& rule1);

    CellGrid grid_;
    float widestHalf_ = 0.0f;
    std::vector<float> cells_;  // and one for NaN
};

}  // namespace clutter::fuzzy

#endif
