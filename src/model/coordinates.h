/*
 * coordinates.h - the values of a record's coordtype.
 */
#ifndef CLUTTER_MODEL_COORDINATES_H
#define CLUTTER_MODEL_COORDINATES_H

namespace clutter::model {

constexpr int kPolar = 0;
/* Polar records of other producers: sampled, but neither sorted nor exported. */
constexpr int kForeignPolar = 1;
constexpr int kCartesian = 2;

}  // namespace clutter::model

#endif
