/*
 * quick_verdict.h - decides most elements of a two-rule product without evaluating it.
 *
 * Which of two products is larger depends on the sum over the inputs of log(degree in rule 0 /
 * degree in rule 1). Where the sum of the cells (ratio_cells.h) is farther from zero than all half
 * widths together (and a margin for rounding), the exact evaluation could only agree; every other
 * element, and every NaN, is left to it.
 */
#ifndef CLUTTER_FUZZY_QUICK_VERDICT_H
#define CLUTTER_FUZZY_QUICK_VERDICT_H

#include <memory>
#include <vector>

#include "fuzzy/engine/ratio_cells.h"
#include "fuzzy/engine/term.h"

namespace clutter::fuzzy {

/* An input whose degrees differ between the rules. */
struct InputCells {
    int input;
    std::shared_ptr<const RatioCells> cells;
};

class QuickVerdict {
  public:
    /* Null when the rules are no two-rule product of tables and plain values, or one of more
     * inputs than products are safe for. */
    [[nodiscard]] static std::unique_ptr<const QuickVerdict> make(const Rules& rules);

    /* The same from cells that were made before; an input without cells gives null. */
    [[nodiscard]] static std::unique_ptr<const QuickVerdict> make(std::vector<InputCells> inputs);

    static constexpr int kMaxElements = RatioCells::kMaxElements;

    /* scores[j] > 0: rule 0 is stronger; < 0: rule 1; 0: undecided. n is at most kMaxElements. */
    void score(const float* const* inputs, int start, int n, float* scores) const;

  private:
    QuickVerdict() = default;

    std::vector<InputCells> inputs_;
    float tolerance_ = 0.0f;
};

}  // namespace clutter::fuzzy

#endif
