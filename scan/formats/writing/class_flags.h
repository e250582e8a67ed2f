/* class_flags.h - the codes of echo classes and their names, as files explain them. */
#ifndef SCAN_FORMATS_WRITING_CLASS_FLAGS_H
#define SCAN_FORMATS_WRITING_CLASS_FLAGS_H

#include "scan/class_codes.h"

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

/* What is written beside the classes, under the name that files of today give it. */
struct CertaintyName {
    const char* field;
    const char* name;
    const char* text;
};

constexpr CertaintyName kCertaintyNames[] = {
    {"PR", "PROBABILITY", "probability of precipitation"},
    {"MA", "MARGIN", "margin between precipitation and clutter"},
};

inline CertaintyName certaintyName(const Field& field) {
    for (const CertaintyName& known : kCertaintyNames) {
        if (field.name == known.field) {
            return known;
        }
    }
    return {field.name.c_str(), field.name.c_str(), field.name.c_str()};
}

}  // namespace scan

#endif
