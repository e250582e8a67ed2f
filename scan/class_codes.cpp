/* class_codes.cpp - fields of classes are known by their values. */
#include "scan/class_codes.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace scan {

bool isClassField(const Field& field) {
    if (field.name != "CCl" && field.name != "CC") {
        return false;
    }
    bool any = false;
    for (const float value : field.values) {
        if (std::isnan(value)) {
            continue;
        }
        if (std::find(std::begin(kClassCodes), std::end(kClassCodes), value) ==
            std::end(kClassCodes)) {
            return false;
        }
        any = true;
    }
    return any;
}

}  // namespace scan
