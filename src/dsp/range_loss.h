/*
 * range_loss.h - what an echo loses on its way, and its signal-to-noise ratio without that loss.
 */
#ifndef CLUTTER_DSP_RANGE_LOSS_H
#define CLUTTER_DSP_RANGE_LOSS_H

#include <vector>

namespace clutter::dsp {

/* 20 log10(range in km) of each gate, dB: in double precision, rounded. Gate 0 is placed one
 * spacing out, so that its logarithm stays finite; the first gate's own range plays no part. */
std::vector<float> rangeLossesDb(int ngates, float gateSizeM);

/* snr = zhh - loss + constant, in single precision, in that order. */
void signalToNoise(const float* zhh, const float* lossesDb, float radarConstant, float* snr, int n);

}  // namespace clutter::dsp

#endif
