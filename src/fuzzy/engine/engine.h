/*
 * engine.h - a rule base made ready to run over arrays.
 *
 * Each rule's strength at an element is the product (or weighted sum) of the degrees it picks, and
 * the element takes the class of the strongest rule. Works in blocks that fit the cache.
 */
#ifndef CLUTTER_FUZZY_ENGINE_H
#define CLUTTER_FUZZY_ENGINE_H

#include <memory>
#include <string>
#include <vector>

#include "clutterclassifier/Cfuzzy.h"
#include "fuzzy/engine/term.h"

namespace clutter::fuzzy {

class QuickVerdict;

/* Elements that the quick verdict leaves undecided, gathered until a block is full. Allocates in
 * its constructor only; one for each thread that classifies. */
class UndecidedElements {
  public:
    static constexpr int kBlock = 256;

    explicit UndecidedElements(int ninputs);

    /* Starts over with other inputs; absent ones are null. */
    void begin(const float* const* inputs);
    void add(int element);
    int count() const { return count_; }
    int element(int at) const { return elements_[at]; }
    const float* const* inputs() const { return inputs_.data(); }
    void clear() { count_ = 0; }

  private:
    // Emptied whenever a block is full, and filled by a block at a time.
    static constexpr std::size_t kCapacity = std::size_t{2} * kBlock;

    std::vector<float> gathered_;
    std::vector<const float*> source_;
    std::vector<const float*> inputs_;
    int elements_[kCapacity];
    int count_ = 0;
};

class RuleBase {
  public:
    /* Reads every membership file that the rules need. Independent of the engine from then on. */
    explicit RuleBase(const Cfuzzy& engine);

    /* Takes rules whose tables outlive it, with the tables for quick verdicts or null. */
    RuleBase(Rules rules, std::unique_ptr<const QuickVerdict> quick);

    RuleBase(RuleBase&&) noexcept;
    ~RuleBase();

    /* False, after a message naming the first function that was not found, in rule order, then
     * input order. */
    [[nodiscard]] bool announceComplete() const;

    /* Tables for quick verdicts pay from this many elements on. */
    static constexpr int kMinMany = 4096;

    /* Makes tables that decide most elements of a long array at once (two-rule products only). */
    void prepareForMany();

    int inputCount() const { return rules_.ninputs; }

    /* Classes of n elements; inputs holds one pointer per input (not read for an absent input). out
     * may be one of the inputs. Any number of threads at once, each with its own undecided. */
    void classify(const float* const* inputs, int n, float* out,
                  UndecidedElements& undecided) const;

  private:
    void classifyBlock(const float* const* inputs, int start, int n, float* out) const;
    void classifyQuickly(const float* const* inputs, int n, float* out,
                         UndecidedElements& undecided) const;
    void decide(UndecidedElements& undecided, float* out) const;
    void evaluateRule(int rule, const float* const* inputs, int start, int n, double* degrees,
                      double* strength) const;

    Rules rules_;
    bool remembersDegrees_ = false;  // a trapezoid sees the degrees of the function before it
    bool complete_ = true;
    std::string missing_;
    TableSet tables_;
    std::unique_ptr<const QuickVerdict> quick_;
};

}  // namespace clutter::fuzzy

#endif
