/*
 * Ground, sea and wind-turbine clutter against precipitation: the same inputs and the same table of
 * variables and classes as for ground clutter alone, with all four classes.
 */
#include "clutterclassifier/Cradarpro.h"
#include "fuzzy/classifiers/precipitation_clutter.h"

int Cradarpro::PrecipitationAllClutterClassification(char* dir, float* stdZhh, float* stdZdr,
                                                     float* stdPdp, float* stdRhv, float* velocity,
                                                     float* ldr, float* pdf, float* rhv,
                                                     float* width, float* out, int n,
                                                     double* weights, int combination) {
    using namespace clutter::fuzzy;
    return classifyClutter({dir,
                            {stdZhh, stdZdr, stdPdp, stdRhv, velocity, ldr, pdf, rhv, width},
                            out,
                            n,
                            weights,
                            combination},
                           kAllClutter);
}
