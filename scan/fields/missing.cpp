/* missing.cpp - fill values by role. */
#include "scan/fields/missing.h"

#include "scan/scan.h"

namespace scan {
namespace {

/* So weak that it is noise at any range and with any constant. */
constexpr float kNoEcho = -999;

}  // namespace

float fillValue(Role role) {
    if (role == Role::kZhh) {
        return kNoEcho;
    }
    return role == Role::kPdf ? 0.5f : kNoValue;
}

void replaceMissing(Role role, std::vector<float>& values) {
    const float fill = fillValue(role);
    for (float& value : values) {
        value = isMissing(role, value) ? fill : value;
    }
}

}  // namespace scan
