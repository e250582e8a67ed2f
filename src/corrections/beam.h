/*
 * beam.h - geometry and power pattern of a straight radar beam over a round Earth without
 * refraction. Metres, radians; heights above the antenna.
 */
#ifndef CLUTTER_CORRECTIONS_BEAM_H
#define CLUTTER_CORRECTIONS_BEAM_H

#include <vector>

namespace clutter::corrections {

constexpr double kEarthRadius = 6.378e6;
constexpr double kLevelStep = 7.5; /* between heights of a beam and levels of a profile, metres */

double beamHeight(double range, double elevation);

/* NaN where the beam never reaches the height. */
double beamRange(double height, double elevation);

/* NaN where the height cannot be seen at the range. */
double viewingAngle(double height, double range);

/* Two-way power over angles off the axis, and over heights about the axis at one range. Each sums
 * to 1. */
struct BeamPattern {
    std::vector<double> angles, power;
    std::vector<double> heights, heightPower; /* empty at or beyond the vertical */
};

BeamPattern computeBeamPattern(double beamwidth, double range, double elevation);

}  // namespace clutter::corrections

#endif
