/*
 * ranking.h - the strongest of several rules at each element.
 */
#ifndef CLUTTER_FUZZY_RANKING_H
#define CLUTTER_FUZZY_RANKING_H

namespace clutter::fuzzy {

/* Rules are added in order. The earliest among equally strong ones wins; a NaN strength is never
 * exceeded, but it differs from every other. */
class Ranking {
  public:
    static constexpr int kMaxElements = 256;

    /* The first rule's strengths at n <= kMaxElements elements, and its class code. */
    void begin(const double* strength, float code, int n);
    void add(const double* strength, float code, int n);

    /* The winner's code; -1 where all rules are equally strong. */
    void winners(float* out, int n) const;

  private:
    double best_[kMaxElements];
    float winner_[kMaxElements];
    int differ_[kMaxElements];
};

}  // namespace clutter::fuzzy

#endif
