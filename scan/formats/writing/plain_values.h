/*
 * plain_values.h - the values of a field as files of floats keep them: missing and no echo are two
 * marks.
 */
#ifndef SCAN_FORMATS_WRITING_PLAIN_VALUES_H
#define SCAN_FORMATS_WRITING_PLAIN_VALUES_H

#include <cmath>
#include <span>
#include <vector>

#include "scan/scan.h"

namespace scan {

/* No moment of a radar is as large as these; both are exact in single precision. */
constexpr float kMissingMark = -0x1p126F;
constexpr float kNoEchoMark = -0x1p125F;

/* What gates without an echo hold in a file: their own value, where the field has one. */
inline float noEchoMarkOf(const Field& field) {
    return field.noEcho.value_or(kNoEchoMark);
}

/* Whether rays differ in length. */
inline bool hasShortRays(const Sweep& sweep) {
    for (const int gates : sweep.rayGates) {
        if (gates != sweep.ngates) {
            return true;
        }
    }
    return false;
}

/* With missing in place of NaN, and noEcho in gates that were found to be without an echo. */
inline std::vector<float> plainValues(const Field& field, float missing, float noEcho) {
    std::vector<float> values(field.values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool hidden = !field.noEchoGates.empty() && field.noEchoGates[i];
        const bool silent = hidden || (field.noEcho && field.values[i] == *field.noEcho);
        values[i] = silent ? noEcho : std::isnan(field.values[i]) ? missing : field.values[i];
    }
    return values;
}

}  // namespace scan

#endif
