/*
 * engine.h - a rule base made ready to run over arrays.
 *
 * Each rule's strength at an element is the product (or weighted sum) of the degrees it picks, and
 * the element takes the class of the strongest rule. Works in blocks that fit the cache.
 */
#ifndef CLUTTER_FUZZY_ENGINE_H
#define CLUTTER_FUZZY_ENGINE_H

#include <array>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "clutterclassifier/Cfuzzy.h"
#include "fuzzy/membership.h"
#include "fuzzy/shapes.h"

namespace clutter::fuzzy {

class OpenElements;
class QuickVerdict;

/* One degree of a rule: which shape of which input. */
struct Term {
    Shape shape = Shape::kOnes;
    std::array<float, 5> params = {};
    const Table* table = nullptr;  // owned by the rule base
};

/* Degrees of n values. A trapezoid leaves some of them as they were. */
void evaluateTerm(const Term& term, const float* x, double* degrees, int n);

/* Membership functions that were read for a rule base, one per input and function. */
using TableSet = std::map<std::pair<int, int>, std::unique_ptr<Table>>;

/*
 * Finds the term of function mf of an input; a negative mf, or an input without data, takes no
 * part. False when there is no such function or its file cannot be read: missing then names it.
 */
bool resolveTerm(const Cfuzzy& engine, int input, int mf, TableSet& tables, Term& term,
                 std::string& missing);

class RuleBase {
  public:
    /* Reads every membership file that the rules need. Independent of the engine from then on. */
    explicit RuleBase(const Cfuzzy& engine);
    ~RuleBase();

    /* False, after a message naming the first function that was not found, in rule order, then
     * input order. */
    bool announceComplete() const;

    /* Makes tables that settle most elements of a long array at once (two-rule products only). */
    void prepareForMany();

    /* Classes of n elements; inputs holds one pointer per input (not read for an absent input). out
     * may be one of the inputs. */
    void classify(const float* const* inputs, int n, float* out) const;

  private:
    friend class QuickVerdict;

    const Term& term(int rule, int input) const {
        return terms_[static_cast<std::size_t>(rule) * static_cast<std::size_t>(ninputs_) +
                      static_cast<std::size_t>(input)];
    }
    void classifyBlock(const float* const* inputs, int start, int n, float* out) const;
    void classifyQuickly(const float* const* inputs, int n, float* out) const;
    void settle(OpenElements& open, float* out) const;
    void evaluateRule(int rule, const float* const* inputs, int start, int n, double* degrees,
                      double* strength) const;

    int ninputs_;
    int nrules_;
    bool product_;
    bool remembersDegrees_ = false;  // a trapezoid sees the degrees of the function before it
    bool complete_ = true;
    std::string missing_;
    std::vector<double> weights_;
    std::vector<float> classes_;  // one per rule
    std::vector<Term> terms_;     // rule after rule
    TableSet tables_;
    std::unique_ptr<QuickVerdict> quick_;
};

}  // namespace clutter::fuzzy

#endif
