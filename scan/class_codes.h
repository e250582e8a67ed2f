/* class_codes.h - the codes of a field of classes. */
#ifndef SCAN_CLASS_CODES_H
#define SCAN_CLASS_CODES_H

#include "scan/scan.h"

namespace scan {

constexpr float kPrecipitation = 0;
constexpr float kNoise = 3;
constexpr float kGroundClutter = 5;
constexpr float kSeaClutter = 6;  // these two only where all classes are asked for
constexpr float kTurbineClutter = 7;
constexpr float kClassCodes[] = {kPrecipitation, kNoise, kGroundClutter, kSeaClutter,
                                 kTurbineClutter};

/* Name of a class field in Universal Format files. */
constexpr char kClassFieldName[] = "CC";

/*
 * A field of class codes: named "CCl" or "CC", with class codes or NaN and at least one class.
 * (Elsewhere "CC" also names a correlation coefficient.)
 */
bool isClassField(const Field& field);

}  // namespace scan

#endif
