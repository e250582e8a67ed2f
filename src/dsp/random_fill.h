/*
 * random_fill.h - random numbers from the C library's generator, which the whole process shares.
 */
#ifndef CLUTTER_DSP_RANDOM_FILL_H
#define CLUTTER_DSP_RANDOM_FILL_H

namespace clutter::dsp {

inline constexpr double kRandomRange = 2147483647.0;

/* srand(rand() + time(0)) */
void reseed();

/* A normally distributed number (one branch of the Box-Muller transform). */
double drawNormal(double mean, double deviation);

}  // namespace clutter::dsp

#endif
