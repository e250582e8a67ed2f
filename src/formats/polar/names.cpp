/*
 * Metadata encoded in file names of polar data.
 */
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "clutterclassifier/CThuPolDaFor.h"

namespace {

constexpr int kUnknown = -1;
constexpr int kNoElevation = -99;
constexpr std::size_t kMinuteDigits = 12;  // YYYYMMDDhhmm

bool contains(std::string_view text, std::string_view piece) {
    return text.find(piece) != std::string_view::npos;
}

/* Seconds since 1970 from the digits at an index of a name; 0 without digits or with an impossible
 * month. */
unsigned int timeAt(std::string_view name, std::size_t index) {
    if (name.size() < index + kMinuteDigits) {
        return 0;
    }
    const std::string digits(name.substr(index, kMinuteDigits));
    const auto time = clutter::base::parseStamp(digits + "00");
    if (!time || time->month < 1 || time->month > 12) {
        return 0;
    }
    return clutter::base::secondsSince1970(*time);
}

/* The digit after the last b. */
int elevationAfterB(std::string_view name) {
    const std::size_t b = name.rfind('b');
    if (b == std::string_view::npos) {
        return kNoElevation;
    }
    return std::atoi(std::string(name.substr(b + 1, 1)).c_str());
}

int siteOf(std::string_view name) {
    if (contains(name, "sidpol")) {
        return 0;
    }
    return contains(name, "augldr") ? 1 : kUnknown;
}

}  // namespace

void CThuPolDaFor::GetCharacteristics(char* filename, int& elevation, unsigned int& time, int& site,
                                      int separator) {
    elevation = kUnknown;
    time = 0;
    site = kUnknown;
    if (filename == nullptr) {
        return;
    }
    const std::string_view name(filename);
    const std::size_t cut = name.rfind(static_cast<char>(separator));
    const std::string_view base = cut == std::string_view::npos ? name : name.substr(cut + 1);
    if (contains(base, "sidpol") || contains(base, "augldr") ||
        contains(base, "wetbulbfreezinglev")) {
        elevation = elevationAfterB(name);
        time = timeAt(base, 0);
        site = siteOf(name);
    } else if (contains(base, "tavo-rain-radar_chenies")) {
        // The digits that should follow are cut off before they are read: always 0.
        elevation = contains(name, "el") ? 0 : kNoElevation;
        time = timeAt(base, 24);
        site = 2;
    }
}
