/*
 * coordinates.h - what the numbers of a record's coordtype mean, and angles in degrees and radians.
 */
#ifndef CLUTTER_MODEL_COORDINATES_H
#define CLUTTER_MODEL_COORDINATES_H

namespace clutter::model {

constexpr int kPolar = 0;
constexpr int kPolarToo =
    1; /* other producers' polar records; sampled, but neither sorted nor exported */
constexpr int kCartesian = 2;

constexpr double kPi = 3.14159265358979323846;

}  // namespace clutter::model

#endif
