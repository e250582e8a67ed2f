/* class_flags.h - the codes of echo classes and their names, as files explain them. */
#ifndef SCAN_FORMATS_WRITING_CLASS_FLAGS_H
#define SCAN_FORMATS_WRITING_CLASS_FLAGS_H

#include <cstdint>
#include <vector>

#include "scan/class_codes.h"
#include "scan/scan.h"

namespace scan {

struct ClassFlag {
    float code;
    const char* name;   // one word, as CF asks
    float serviceCode;  // in a list that weather services publish
};

constexpr ClassFlag kClassFlags[] = {
    {kPrecipitation, "precipitation", 64},     {kNoise, "noise", 232},
    {kGroundClutter, "ground_clutter", 148},   {kSeaClutter, "sea_clutter", 152},
    {kTurbineClutter, "turbine_clutter", 175},
};

inline float writtenCode(const ClassFlag& flag, bool serviceCodes) {
    return serviceCodes ? flag.serviceCode : flag.code;
}
constexpr int kNoClass = 255;  // of a byte: the gate has no class

/* The byte of a gate; classes hold codes of the library, or NaN. */
inline std::uint8_t classByte(float value, bool serviceCodes) {
    for (const ClassFlag& flag : kClassFlags) {
        if (flag.code == value) {
            return static_cast<std::uint8_t>(writtenCode(flag, serviceCodes));
        }
    }
    return kNoClass;
}

inline std::vector<std::uint8_t> classBytes(const std::vector<float>& classes, bool serviceCodes) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(classes.size());
    for (const float code : classes) {
        bytes.push_back(classByte(code, serviceCodes));
    }
    return bytes;
}

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
