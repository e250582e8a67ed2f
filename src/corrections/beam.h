/*
 * beam.h - geometry and power pattern of a straight radar beam over a spherical Earth without
 * refraction. Metres and radians; heights are above the antenna.
 */
#ifndef CLUTTER_CORRECTIONS_BEAM_H
#define CLUTTER_CORRECTIONS_BEAM_H

#include <vector>

namespace clutter::corrections {

constexpr double kLevelStepM = 7.5;  // between heights of a beam and levels of a profile

double beamHeight(double range, double elevation);

/* NaN where the beam never reaches the height. */
double beamRange(double height, double elevation);

/* NaN where the height is out of sight at the range. */
double viewingAngle(double height, double range);

/* Two-way power over angles from the axis, and over heights from the axis at one range. Both sum to
 * 1. */
struct BeamPattern {
    std::vector<double> angles, power;
    std::vector<double> heights, heightPower;  // empty at or past the vertical
};

BeamPattern computeBeamPattern(double beamwidth, double range, double elevation);

}  // namespace clutter::corrections

#endif
