/* class_flags.h - the codes of echo classes and their names, as files explain them. */
#ifndef SCAN_FORMATS_CLASS_FLAGS_H
#define SCAN_FORMATS_CLASS_FLAGS_H

#include "scan/fields/roles.h"

namespace scan {

struct ClassFlag {
    float code;
    const char* name;  // one word, as CF asks
};

constexpr ClassFlag kClassFlags[] = {
    {kPrecipitation, "precipitation"},    {kNoise, "noise"},
    {kGroundClutter, "ground_clutter"},   {kSeaClutter, "sea_clutter"},
    {kTurbineClutter, "turbine_clutter"},
};
constexpr int kNoClass = 255;  // of a byte: the gate has no class
constexpr char kClassName[] = "CLASS";

}  // namespace scan

#endif
