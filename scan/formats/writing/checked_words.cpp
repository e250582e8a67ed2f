/* checked_words.cpp - bounds of words, and the notes about what lies outside. */
#include "scan/formats/writing/checked_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace scan {

bool CheckedWords::allows(const char* what, double value, double lowest, double highest) {
    if (value >= lowest && value <= highest) {
        return true;
    }
    if (std::find(quantities_.begin(), quantities_.end(), what) == quantities_.end()) {
        quantities_.push_back(what);
        char number[40];
        std::snprintf(number, sizeof number, "%g", value);
        note(kind_ + " cannot hold a " + what + " of " + number + ": 0 is written");
    }
    return false;
}

short CheckedWords::word(const char* what, double value, double perUnit) {
    using Limits = std::numeric_limits<short>;
    const bool fits = allows(what, value, Limits::min() / perUnit, Limits::max() / perUnit);
    return fits ? static_cast<short>(std::lround(value * perUnit)) : short{0};
}

void CheckedWords::note(const std::string& sentence) {
    notes_.push_back(sentence);
}

}  // namespace scan
