/*
 * gate_kernels.h - the classification stage's work on one ray.
 */
#ifndef CLUTTER_DRIVER_GATE_KERNELS_H
#define CLUTTER_DRIVER_GATE_KERNELS_H

#include <vector>

namespace clutter::driver {

/* 20 log10(range in km) of each gate, dB: in double precision, rounded. Gate 0 is placed one
 * spacing out, so that its logarithm stays finite; the first gate's own range plays no part. */
std::vector<float> rangeLossesDb(int ngates, float gateSizeM);

/* snr = zhh - loss + constant, in single precision, in that order. */
void signalToNoise(const float* zhh, const float* lossesDb, float radarConstant, float* snr, int n);

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
