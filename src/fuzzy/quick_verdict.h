/*
 * quick_verdict.h - settles most elements of a two-rule product without evaluating it.
 *
 * Which of two products is larger depends on the sum over the inputs of log(degree in rule 0 /
 * degree in rule 1). Each input's range is cut into cells; a cell holds the middle of the log
 * ratio's range over it. Where the sum is farther from zero than all half widths together (and a
 * margin for rounding), the exact evaluation could only agree; every other element is left to it. A
 * cell whose range is too wide, or whose degrees leave 2^-100 .. 2^100, holds NaN, which keeps the
 * sum from settling anything.
 */
#ifndef CLUTTER_FUZZY_QUICK_VERDICT_H
#define CLUTTER_FUZZY_QUICK_VERDICT_H

#include <memory>
#include <vector>

namespace clutter::fuzzy {

class RuleBase;
struct Term;

class QuickVerdict {
  public:
    /* Null when the rule base is no two-rule product of tables and plain values, or one of more
     * inputs than products are safe for. */
    static std::unique_ptr<QuickVerdict> make(const RuleBase& rules);

    static constexpr int kMost = 256;

    /* scores[j] > 0: rule 0 is stronger; < 0: rule 1; 0: not settled. n is at most kMost. */
    void score(const float* const* inputs, int start, int n, float* scores) const;

  private:
    static constexpr int kCells = 2048;

    struct Ratio {
        int input = 0;
        float origin = 0.0f;
        float cellsPerUnit = 0.0f;
        std::vector<float> cells;  // and one for NaN
    };

    /* False when the input's range cannot be cut into cells. */
    bool addInput(int input, const Term& rule0, const Term& rule1);

    std::vector<Ratio> ratios_;
    float tolerance_ = 0.0f;
};

}  // namespace clutter::fuzzy

#endif
