/*
 * precipitation_clutter.h - the fuzzy system that tells precipitation from ground clutter.
 */
#ifndef CLUTTER_FUZZY_PRECIPITATION_CLUTTER_H
#define CLUTTER_FUZZY_PRECIPITATION_CLUTTER_H

#include "clutterclassifier/Cfuzzy.h"

namespace clutter::fuzzy {

/* Inputs of the classifier, in argument order. */
enum Input {
    kStdZhh,
    kStdZdr,
    kStdPdp,
    kStdRhv,
    kVelocity,
    kLdr,
    kClutterLikelihood,
    kRhv,
    kWidth,
    kInputCount
};

constexpr int kClassCount = 2;
constexpr float kGroundClutter = 0.0f;
constexpr float kPrecipitation = 1.0f;

/* An engine of the right size: kInputCount inputs of two functions, one output. */
class PrecipitationClutterEngine : public Cfuzzy {
  public:
    /* Fills variables, membership functions, rules and data. An input whose array is null takes no
     * part. dir is used verbatim; null is an empty text. */
    PrecipitationClutterEngine(const char* dir, float* const (&arrays)[kInputCount]);
};

}  // namespace clutter::fuzzy

#endif
