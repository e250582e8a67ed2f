/*
 * log_ratio.h - logarithms of the ratio of two strengths, and the probability that follows.
 *
 * Plain arithmetic, so that the bits are the same everywhere.
 */
#ifndef CLUTTER_CLASSIFIER_LOG_RATIO_H
#define CLUTTER_CLASSIFIER_LOG_RATIO_H

namespace clutter::classifier {

/*
 * out = ln(above / below), correct to a relative 1e-6 where both are normal positive numbers, and
 * of the sign of above - below. Infinite where one of them is not positive, 0 where both are equal;
 * NaN where one is NaN.
 */
void logRatios(const double* above, const double* below, float* out, int n);

/* The same for one pair, in double precision. */
double logRatio(double above, double below);

/* out = 1 / (1 + exp(-margin)), to within 1e-6; NaN for NaN. */
void probabilities(const float* margins, float* out, int n);

}  // namespace clutter::classifier

#endif
