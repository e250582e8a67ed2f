/*
 * uniform.h - uniformly distributed numbers from the C library's generator.
 */
#ifndef CLUTTER_DSP_UNIFORM_H
#define CLUTTER_DSP_UNIFORM_H

namespace clutter::dsp {

/* Fills out with n values of [min, max]. Reseeds the generator from itself and the clock first. */
void fillUniform(double* out, int n, double min, double max);

}  // namespace clutter::dsp

#endif
