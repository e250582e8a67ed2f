/*
 * fields.h - Universal Format fields by their two-letter names.
 */
#ifndef CLUTTER_FORMATS_UF_FIELDS_H
#define CLUTTER_FORMATS_UF_FIELDS_H

#include <algorithm>
#include <iterator>
#include <limits>
#include <string_view>

namespace clutter::formats {

struct UfName {
    std::string_view recordName;
    const char* ufName;
};

/* The two-letter names of field records. Records named "CI", as by the reader of polar data, are
 * not among them: the comparison is with "Ci". */
constexpr UfName kUfNames[] = {
    {"Zh", "DZ"}, {"Zdr", "DR"}, {"Phidp", "PH"}, {"RhoHV", "RH"}, {"W", "SW"},   {"V", "VR"},
    {"Zv", "DZ"}, {"Ci", "CI"},  {"SQI", "SQ"},   {"KDP", "KD"},   {"LDR", "LD"},
};
constexpr const char* kUnknownName = "UN";

inline const char* ufNameOf(std::string_view recordName) {
    const auto found = std::find_if(std::begin(kUfNames), std::end(kUfNames),
                                    [&](const UfName& n) { return n.recordName == recordName; });
    return found == std::end(kUfNames) ? kUnknownName : found->ufName;
}

struct DisplayRange {
    std::string_view ufName;
    float lowest;
    float highest;
};

constexpr DisplayRange kDisplayRanges[] = {
    {"DZ", 0.0f, 60.0f}, {"DR", -8.0f, 5.0f},  {"PH", -30.0f, 360.0f}, {"RH", 0.5f, 1.0f},
    {"SW", 0.0f, 2.5f},  {"VR", -5.0f, 5.0f},  {"CI", 0.0f, 1.0f},     {"SQ", 0.0f, 1.0f},
    {"KD", 0.0f, 10.0f}, {"LD", -40.0f, 0.0f},
};
constexpr DisplayRange kOtherDisplayRange = {"", 0.0f, 20.0f};

inline DisplayRange displayRangeOf(std::string_view ufName) {
    const auto found = std::find_if(std::begin(kDisplayRanges), std::end(kDisplayRanges),
                                    [&](const DisplayRange& d) { return d.ufName == ufName; });
    return found == std::end(kDisplayRanges) ? kOtherDisplayRange : *found;
}

/* Reflectivities in dBZ, corrected and uncorrected, of either polarisation. */
constexpr std::string_view kReflectivities[] = {"DZ", "CZ", "ZT", "UZ", "ZH", "ZV", "ZE", "DB"};

constexpr float kNoRainDbz = -32.0f;

/* The value of a gate without a measurement: no rain in reflectivity, so that it counts as noise;
 * NaN in other fields. */
inline float absentValueOf(std::string_view ufName) {
    const bool reflectivity = std::find(std::begin(kReflectivities), std::end(kReflectivities),
                                        ufName) != std::end(kReflectivities);
    return reflectivity ? kNoRainDbz : std::numeric_limits<float>::quiet_NaN();
}

}  // namespace clutter::formats

#endif
