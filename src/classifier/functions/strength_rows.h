/*
 * strength_rows.h - one input's degrees in two classes, multiplied to their products in one lookup.
 */
#ifndef CLUTTER_CLASSIFIER_STRENGTH_ROWS_H
#define CLUTTER_CLASSIFIER_STRENGTH_ROWS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "fuzzy/engine/cell_grid.h"
#include "fuzzy/functions/membership.h"

namespace clutter::classifier {

/*
 * A value's cell gives the lowest segment of the tables that the value can lie in; few values need
 * a step to a higher one. Degrees come from slopes instead of quotients: they differ from the
 * engine's by rounding only, at most kMaxError of themselves.
 */
class StrengthRows {
  public:
    static constexpr int kMaxElements = 256;
    static constexpr double kMaxError = 1e-11;

    /* Nothing when the tables do not share their abscissas, or a degree is so small beside the
     * others that rounding would show. */
    [[nodiscard]] static std::optional<StrengthRows> make(const fuzzy::Table& clutter,
                                                          const fuzzy::Table& precipitation);

    /* Multiplies the degrees of n <= kMaxElements values to both products. A NaN has the last
     * degree, or 1 in both classes where it is to be left out. */
    void multiply(const float* x, bool leaveOutNan, double* clutter, double* precipitation,
                  int n) const;

  private:
    static constexpr int kCells = 2048;

    /* A segment: degree + slope * (x - right). */
    struct Row {
        double right;
        double clutter, precipitation;
        double clutterSlope, precipitationSlope;
    };

    StrengthRows() = default;

    fuzzy::CellGrid grid_;
    std::vector<Row> rows_;             // before the first point, segments, past the last, left out
    std::vector<float> thresholds_;     // where the next row begins; NaN after the last
    std::vector<std::uint16_t> first_;  // row to begin with, one per cell and one for NaN
};

}  // namespace clutter::classifier

#endif
