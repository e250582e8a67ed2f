/*
 * The triangle of Earth centre, antenna and gate; the pattern over angles, then over heights.
 */
#include "corrections/beam.h"

#include <algorithm>
#include <cmath>

#include "base/array.h"
#include "base/constants.h"
#include "clutterclassifier/Cradarpro.h"
#include "dsp/search/interpolation.h"

namespace clutter::corrections {
namespace {

using base::kEarthRadiusM;
using base::kPi;

constexpr double kPatternWidth = 159.46;  // divided by the beamwidth (deg): half power at its half
constexpr double kMaxAngleDeg = 5.0;
constexpr double kAngleStepDeg = 0.01;
constexpr int kAngles = 1000;
constexpr double kMaxHeights = 100000.0;
/* A root is defined as the power 0.5, whose last bit sometimes differs from the square root.
 * Volatile, since compilers replace one by the other. */
const volatile double kHalf = 0.5;

void normalise(std::vector<double>& power) {
    double sum = 0.0;
    for (const double p : power) {
        sum += p;
    }
    for (double& p : power) {
        p /= sum;
    }
}

double patternAt(double angle, double width) {
    if (angle == 0.0) {
        return 1.0;
    }
    return std::pow(std::sin(width * angle) / (width * angle), 4.0);
}

/* Heights from -thickness to thickness, where thickness is the height of the beam's upper edge
 * above its axis. */
std::vector<double> heightGrid(double beamwidth, double range, double elevation) {
    const double axis = beamHeight(range, elevation);
    const double edge = beamHeight(range, elevation + beamwidth / 2.0);
    const double thickness = std::ceil((edge - axis) / kLevelStepM) * kLevelStepM;
    const double count = 2.0 * thickness / kLevelStepM;
    const bool sound = count >= 1.0 && count <= kMaxHeights;  // false for NaN
    std::vector<double> heights(sound ? static_cast<std::size_t>(count) : 0);
    for (std::size_t i = 0; i < heights.size(); ++i) {
        heights[i] = static_cast<double>(i) * kLevelStepM - thickness;
    }
    return heights;
}

}  // namespace

double beamHeight(double range, double elevation) {
    const double squared = range * range + kEarthRadiusM * kEarthRadiusM +
                           2.0 * range * kEarthRadiusM * std::sin(elevation);
    return std::pow(squared, kHalf) - kEarthRadiusM;
}

double beamRange(double height, double elevation) {
    const double b = 2.0 * kEarthRadiusM * std::sin(elevation);
    const double c =
        kEarthRadiusM * kEarthRadiusM - (kEarthRadiusM + height) * (kEarthRadiusM + height);
    const double root = std::sqrt(b * b - 4.0 * c);
    return (-b + root) / 2.0;
}

double viewingAngle(double height, double range) {
    const double outer = (kEarthRadiusM + height) * (kEarthRadiusM + height);
    return std::asin((outer - kEarthRadiusM * kEarthRadiusM - range * range) /
                     (2.0 * range * kEarthRadiusM));
}

BeamPattern computeBeamPattern(double beamwidth, double range, double elevation) {
    BeamPattern pattern;
    const double width = kPatternWidth / (beamwidth * 180.0 / kPi);
    for (int i = 0; i < kAngles; ++i) {
        pattern.angles.push_back((i * kAngleStepDeg - kMaxAngleDeg) * kPi / 180.0);
        pattern.power.push_back(patternAt(pattern.angles.back(), width));
    }
    normalise(pattern.power);
    pattern.heights = heightGrid(beamwidth, range, elevation);
    const int n = static_cast<int>(pattern.heights.size());
    pattern.heightPower.resize(pattern.heights.size());
    std::transform(pattern.heights.begin(), pattern.heights.end(), pattern.heightPower.begin(),
                   [range](double height) { return viewingAngle(height, range); });
    dsp::interpolateLinear(pattern.angles.data(), pattern.power.data(), kAngles,
                           pattern.heightPower.data(), pattern.heightPower.data(), n);
    normalise(pattern.heightPower);
    return pattern;
}

}  // namespace clutter::corrections

using namespace clutter::corrections;

void Cradarpro::h_beam(double* range, double elevation, double* height, int n) {
    for (int i = 0; i < n; ++i) {
        height[i] = beamHeight(range[i], elevation);
    }
}

void Cradarpro::r_beam(double* height, double elevation, double* range, int n) {
    for (int i = 0; i < n; ++i) {
        range[i] = beamRange(height[i], elevation);
    }
}

void Cradarpro::gama(double* height, double range, double* angle, int n) {
    for (int i = 0; i < n; ++i) {
        angle[i] = viewingAngle(height[i], range);
    }
}

void Cradarpro::BeamPowerProfile(double beamwidth, double range, double elevation, double** power,
                                 double** angles, int& nangles, double** powerH, double** heights,
                                 int& nheights) {
    const BeamPattern pattern = computeBeamPattern(beamwidth, range, elevation);
    clutter::base::adopt(*power, clutter::base::duplicate(pattern.power));
    clutter::base::adopt(*angles, clutter::base::duplicate(pattern.angles));
    clutter::base::adopt(*powerH, clutter::base::duplicate(pattern.heightPower));
    clutter::base::adopt(*heights, clutter::base::duplicate(pattern.heights));
    nangles = static_cast<int>(pattern.angles.size());
    nheights = static_cast<int>(pattern.heights.size());
}
