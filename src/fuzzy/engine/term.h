/*
 * term.h - one degree of a rule: which membership function of which input.
 */
#ifndef CLUTTER_FUZZY_TERM_H
#define CLUTTER_FUZZY_TERM_H

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/Cfuzzy.h"
#include "fuzzy/functions/membership.h"
#include "fuzzy/functions/shapes.h"

namespace clutter::fuzzy {

struct Term {
    Shape shape = Shape::kOnes;
    std::array<float, 5> params = {};
    const Table* table = nullptr;  // owned by whoever made the term
};

/* Degrees of n values. A trapezoid leaves some of them as they were. */
void evaluateTerm(const Term& term, const float* x, double* degrees, int n);

/* A rule base as plain data: each rule picks one term per input and gives one class. */
struct Rules {
    int ninputs = 0;
    bool product = true;          // else the weighted sum
    std::vector<double> weights;  // one per input
    std::vector<float> classes;   // one per rule
    std::vector<Term> terms;      // rule after rule

    int count() const { return static_cast<int>(classes.size()); }
    const Term& term(int rule, int input) const {
        return terms[static_cast<std::size_t>(rule) * static_cast<std::size_t>(ninputs) +
                     static_cast<std::size_t>(input)];
    }
};

/* Membership functions that were read for a rule base, one per input and function. */
using TableSet = std::map<std::pair<int, int>, std::unique_ptr<Table>>;

/*
 * Finds the term of function mf of an input; a negative mf, or an input without data, has the
 * degree 1. False when there is no such function or its file cannot be read: missing then names it.
 */
[[nodiscard]] bool resolveTerm(const Cfuzzy& engine, int input, int mf, TableSet& tables,
                               Term& term, std::string& missing);

}  // namespace clutter::fuzzy

#endif
