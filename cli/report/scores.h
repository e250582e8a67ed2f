/*
 * scores.h - how good a classification is, against a known truth.
 *
 * The event is ground clutter, and the gates that count are those whose true class is clutter or
 * precipitation:
 *
 *                           classified as clutter    as anything else
 *     truth clutter                 hits                  misses
 *     truth precipitation       falseAlarms          correctNegatives
 *
 * A gate classified as noise is neither detected clutter nor precipitation lost to clutter.
 */
#ifndef CLI_REPORT_SCORES_H
#define CLI_REPORT_SCORES_H

#include <array>
#include <cstdint>
#include <vector>

namespace cli {

/* Order of the rows and columns of a confusion matrix. */
enum ClassIndex { kIsPrecipitation, kIsClutter, kIsNoise };

/* counts[truth][result] */
using Confusion = std::array<std::array<std::int64_t, 3>, 3>;

/* Gates whose truth or result is not one of the class codes 0, 3 and 5 are left out. Throws
 * std::invalid_argument when the sizes differ. */
Confusion compare(const std::vector<float>& truth, const std::vector<double>& result);

/* NaN where the formula divides by zero. */
struct Scores {
    double pod;  // probability of detection: hits / (hits + misses)
    double far;  // false alarm ratio: falseAlarms / (hits + falseAlarms)
    double csi;  // critical success index: hits / (hits + misses + falseAlarms)
    double hss;  /* Heidke: correct decisions beyond chance / all decisions beyond chance, with
                    hits a, falseAlarms b, misses c, correctNegatives d
                    2 (a d - b c) / ((a + c) (c + d) + (a + b) (b + d)) */
    double kept; /* precipitation that is still precipitation or noise:
                    correctNegatives / (correctNegatives + falseAlarms) */
};
Scores scoresOf(const Confusion& confusion);

}  // namespace cli

#endif
