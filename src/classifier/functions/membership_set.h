/*
 * membership_set.h - the membership functions of a directory, read once, checked, and prepared.
 */
#ifndef CLUTTER_CLASSIFIER_MEMBERSHIP_SET_H
#define CLUTTER_CLASSIFIER_MEMBERSHIP_SET_H

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "classifier/functions/strength_rows.h"
#include "fuzzy/classifiers/inputs.h"
#include "fuzzy/engine/engine.h"
#include "fuzzy/engine/ratio_cells.h"
#include "fuzzy/engine/term.h"
#include "fuzzy/functions/membership.h"

namespace clutter::classifier {

constexpr int kMaxClasses = 4;  // ground clutter, precipitation, sea clutter, wind turbines
constexpr int kPrecipitationClass = 1;

/* One input's degrees in every class. */
struct InputFunctions {
    std::array<std::unique_ptr<fuzzy::Table>, kMaxClasses> tables;
    std::array<fuzzy::Term, kMaxClasses> terms;
    bool sameAbscissas = false;                      // all tables have those of the first
    std::shared_ptr<const fuzzy::RatioCells> cells;  // ground clutter over precipitation
    std::optional<StrengthRows> rows;                // of ground clutter and precipitation

    /* Whether multiplyTwo() can be used. */
    bool isQuick() const { return rows || !tables[0]; }

    /* Multiplies the degrees in ground clutter and precipitation to both products. */
    void multiplyTwo(const float* x, bool leaveOutNan, ClassPair* products, int n) const;

    /* The degree of one value in a class. */
    double degree(int c, float x) const;

    /* Degrees of n <= fuzzy::Table::kMaxElements values in the first classes. */
    void evaluate(const float* x, int n, int classes, double* const* degrees) const;
};

/* Does not change once it is made. */
class MembershipSet {
  public:
    /* inputs is a sum of bits. Throws Refusal with the file, the line and the reason. */
    MembershipSet(const std::string& directory, unsigned inputs, int classes);

    unsigned inputs() const { return inputs_; }
    int classes() const { return classes_; }
    const InputFunctions& input(int i) const { return functions_[static_cast<std::size_t>(i)]; }

    /* The rules of some of the inputs in the first classes. Must not outlive the set. */
    fuzzy::RuleBase rules(unsigned inputs, int classes) const;

  private:
    unsigned inputs_;
    int classes_;
    std::array<InputFunctions, fuzzy::kInputCount> functions_;
};

}  // namespace clutter::classifier

#endif
