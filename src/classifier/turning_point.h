/*
 * turning_point.h - the nearest value of one input of a gate that would turn the verdict.
 */
#ifndef CLUTTER_CLASSIFIER_TURNING_POINT_H
#define CLUTTER_CLASSIFIER_TURNING_POINT_H

#include <vector>

#include "classifier/functions/membership_set.h"

namespace clutter::classifier {

/* The margin over one kind of clutter as a function of one input's degrees:
 * rest + weight * ln(precipitation * degree / (clutter * degree)), the logarithm within -limit ..
 * limit. */
struct Balance {
    int clutterClass;      // of the fuzzy system
    double precipitation;  // product of the degrees of other inputs
    double clutter;
    double limit;
    double weight;
    double rest;
};

class TurningPoint {
  public:
    TurningPoint(const InputFunctions& functions, float value, bool isPrecipitation)
        : functions_(functions), value_(value), isPrecipitation_(isPrecipitation) {}

    void add(const Balance& kind) { kinds_.push_back(kind); }

    /* The nearest value with the other verdict; NaN when there is none. */
    double find() const;

  private:
    bool isTurned(float x) const;
    std::vector<float> findCorners() const;
    template <class Iterator>
    double search(Iterator next, Iterator end) const;
    double halve(float kept, float turned) const;

    const InputFunctions& functions_;
    float value_;
    bool isPrecipitation_;
    std::vector<Balance> kinds_;
};

}  // namespace clutter::classifier

#endif
