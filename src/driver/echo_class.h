/*
 * echo_class.h - the class codes of the classification record.
 */
#ifndef CLUTTER_DRIVER_ECHO_CLASS_H
#define CLUTTER_DRIVER_ECHO_CLASS_H

namespace clutter::driver {

constexpr float kPrecipitationClass = 0.0f;  // or undecided
constexpr float kNoiseClass = 3.0f;
constexpr float kGroundClutterClass = 5.0f;

}  // namespace clutter::driver

#endif
