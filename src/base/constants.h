/*
 * constants.h - numbers that several folders need, each in every precision that is in use.
 *
 * Results are defined bit by bit. Some definitions and files use a rounded constant: its name says
 * so; the rounding is deliberate.
 */
#ifndef CLUTTER_BASE_CONSTANTS_H
#define CLUTTER_BASE_CONSTANTS_H

namespace clutter::base {

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kTwoPi = 6.283185307179586;
inline constexpr float kFloatPi = 3.1415927f;

/* Pi with seven decimals, in double precision: angles of German DX scans. */
inline constexpr double kPiSevenDecimals = 3.1415927;
/* Pi with four decimals: angles written to Universal Format files. */
inline constexpr float kFloatPiFourDecimals = 3.1416f;
/* Just above pi: the ends of the phase scale of polar data. */
inline constexpr float kFloatPiShown = 3.1415999f;

/* 180 / pi with five decimals: differential phase of polar data. */
inline constexpr double kDegreesPerRadianFiveDecimals = 57.29578;
inline constexpr float kFloatOneDegreeRad = 0.017453292f;
inline constexpr double kHalfDegreeRad = 0.008726646259971648;

/* A sphere without refraction. */
inline constexpr double kEarthRadiusM = 6.378e6;

static_assert(kTwoPi == 2.0 * kPi && kFloatPi == static_cast<float>(kPi));

}  // namespace clutter::base

#endif
