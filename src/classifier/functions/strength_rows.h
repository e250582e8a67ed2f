/*
 * strength_rows.h - one input's degrees in two classes, multiplied to their products in one lookup.
 */
#ifndef CLUTTER_CLASSIFIER_STRENGTH_ROWS_H
#define CLUTTER_CLASSIFIER_STRENGTH_ROWS_H

#include <optional>
#include <vector>

#include "fuzzy/functions/membership.h"

namespace clutter::classifier {

/* Ground clutter and precipitation side by side: both are computed at once. */
typedef double ClassPair __attribute__((vector_size(16)));

/*
 * Degrees come from slopes instead of quotients: they differ from the engine's by rounding only, at
 * most kMaxError of themselves.
 */
class StrengthRows {
  public:
    static constexpr int kMaxElements = 256;
    static constexpr double kMaxError = 1e-11;

    /* From tables that outlive this. Nothing when they do not share their abscissas, or a degree is
     * so small beside the others that rounding would show. */
    [[nodiscard]] static std::optional<StrengthRows> make(const fuzzy::Table& clutter,
                                                          const fuzzy::Table& precipitation);

    /* Multiplies the degrees of n <= kMaxElements values to both products. A NaN has the last
     * degree, or 1 in both classes where it is to be left out. */
    void multiply(const float* x, bool leaveOutNan, ClassPair* products, int n) const;

  private:
    /* A segment: degree + slope * (x - right). */
    struct Row {
        double right;
        ClassPair degree;
        ClassPair slope;
    };

    explicit StrengthRows(const fuzzy::Table& table) : table_(&table) {}

    const fuzzy::Table* table_;  // of the abscissas
    std::vector<Row> rows_;      // before the first point, segments, past the last, left out
};

}  // namespace clutter::classifier

#endif
