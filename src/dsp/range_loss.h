/*
 * range_loss.h - the loss of an echo with range, and the signal-to-noise ratio.
 */
#ifndef CLUTTER_DSP_RANGE_LOSS_H
#define CLUTTER_DSP_RANGE_LOSS_H

#include <vector>

namespace clutter::dsp {

/* 20 log10(range in km) of each gate, dB: in double precision, rounded. Gate 0 counts as gate 1, so
 * that its logarithm is finite. The range of the first gate is ignored. */
std::vector<float> rangeLossesDb(int ngates, float gateSizeM);

/* snr = zhh - loss + constant, in single precision, in that order. */
void signalToNoise(const float* zhh, const float* lossesDb, float radarConstant, float* snr, int n);

}  // namespace clutter::dsp

#endif
