/*
 * gate_kernels.h - the classification stage's work on one ray.
 */
#ifndef CLUTTER_DRIVER_GATE_KERNELS_H
#define CLUTTER_DRIVER_GATE_KERNELS_H

#include "dsp/range_loss.h"

namespace clutter::driver {

using dsp::rangeLossesDb;
using dsp::signalToNoise;

/* Noise where the threshold exceeds the ratio, else precipitation; a NaN ratio is an echo. */
void markNoise(const float* snr, float minSnr, float* cls, int n);

/* How many of n classes are not exactly noise. */
int countEchoes(const float* cls, int n);

/* after = before for noise, else ground clutter where the verdict is clutter, else precipitation.
 */
void applyVerdicts(const float* before, const float* verdicts, float* after, int n);

/* Doubles to the nearest floats, and back. */
void narrow(const double* from, float* to, int n);
void widen(const float* from, double* to, int n);

}  // namespace clutter::driver

#endif
