/*
 * precipitation_clutter.h - the fuzzy system that separates precipitation from clutter: from
 * ground clutter alone, or from ground, sea and wind-turbine clutter.
 */
#ifndef CLUTTER_FUZZY_PRECIPITATION_CLUTTER_H
#define CLUTTER_FUZZY_PRECIPITATION_CLUTTER_H

#include <string>

#include "clutterclassifier/Cfuzzy.h"
#include "fuzzy/classifiers/inputs.h"

namespace clutter::fuzzy {

/* Number of classes of each system. */
constexpr int kGroundOnly = 2;
constexpr int kAllClutter = 4;

/* Verdicts: rule k gives class k. Only the system of all clutter has the last two. */
constexpr float kGroundClutter = 0.0f;
constexpr float kPrecipitation = 1.0f;
constexpr float kSeaClutter = 2.0f;
constexpr float kTurbineClutter = 3.0f;

/* The membership file of an input in a class; dir is used verbatim. The input must have a tag. */
std::string membershipFile(const std::string& dir, int input, int fuzzyClass);

/* An engine of the right size: kInputCount inputs of one function a class, one output. */
class PrecipitationClutterEngine : public Cfuzzy {
  public:
    /* Fills variables, membership functions, rules and data. An input whose array is null takes no
     * part. dir is used verbatim; null is an empty text. */
    PrecipitationClutterEngine(const char* dir, float* const (&arrays)[kInputCount],
                               int classes = kGroundOnly);
};

/* Arguments of both classifiers: n elements of the inputs that are not null. */
struct ClutterQuestion {
    const char* dir;
    float* arrays[kInputCount];
    float* out;
    int n;
    const double* weights;  // null: product of degrees
    int combination;
};

/* Returns 1; 0 when out is null, when there is no input (out is then -1.0 everywhere) or after a
 * membership file was not found. */
int classifyClutter(const ClutterQuestion& question, int classes);

}  // namespace clutter::fuzzy

#endif
