/* angles.h - pi, and degrees as radians. */
#ifndef SCAN_ANGLES_H
#define SCAN_ANGLES_H

#include <numbers>

namespace scan {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kTwoPi = 2.0 * kPi;
inline constexpr double kRadiansPerDegree = kPi / 180.0;
inline constexpr double kDegreesPerRadian = 180.0 / kPi;

}  // namespace scan

#endif
