/* missing.cpp - fill values by role. */
#include "scan/fields/missing.h"

#include <cmath>
#include <limits>

#include "scan/scan.h"

namespace scan {
namespace {

/* So weak that it is noise at any range and with any constant. */
constexpr float kNoEcho = -999;

}  // namespace

bool isMissing(Role role, float value) {
    return !std::isfinite(value) || (role == Role::kZhh && value == kNoRainDbz);
}

float fillValue(Role role) {
    if (role == Role::kZhh) {
        return kNoEcho;
    }
    return role == Role::kPdf ? 0.5f : std::numeric_limits<float>::quiet_NaN();
}

void replaceMissing(Role role, std::vector<float>& values) {
    for (float& value : values) {
        if (isMissing(role, value)) {
            value = fillValue(role);
        }
    }
}

}  // namespace scan
