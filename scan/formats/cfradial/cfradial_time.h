/* cfradial_time.h - times as CF writes them: "seconds since 2011-05-20T10:54:08Z". */
#ifndef SCAN_FORMATS_CFRADIAL_CFRADIAL_TIME_H
#define SCAN_FORMATS_CFRADIAL_CFRADIAL_TIME_H

#include <cstdio>
#include <optional>
#include <string>

#include "scan/calendar.h"

namespace scan::cfradial {

/* Seconds since 1970 of "2011-05-20T10:54:08Z", "2011-05-20 10:54:08.5" or a date alone. */
inline std::optional<double> parseMoment(const std::string& text) {
    DateTime time;
    double second = 0;
    const int parts = std::sscanf(text.c_str(), "%d-%d-%d%*1[T ]%d:%d:%lf", &time.year, &time.month,
                                  &time.day, &time.hour, &time.minute, &second);
    const bool possible = parts >= 3 && time.year >= 1 && time.year <= 9999 && time.month >= 1 &&
                          time.month <= 12 && time.day >= 1 && time.day <= 31;
    if (!possible || !std::isfinite(second)) {
        return std::nullopt;
    }
    return secondsOf(time) + second;
}

/* What a number of units means: seconds since 1970 of zero, and seconds a unit. */
struct TimeUnits {
    double zeroS = 0;
    double unitS = 1;
};

inline std::optional<TimeUnits> parseTimeUnits(const std::string& text) {
    const std::size_t since = text.find(" since ");
    if (since == std::string::npos) {
        return std::nullopt;
    }
    const std::optional<double> zero = parseMoment(text.substr(since + 7));
    if (!zero) {
        return std::nullopt;
    }
    const std::string unit = text.substr(0, since);
    struct Known {
        const char* prefix;
        double seconds;
    };
    constexpr Known kUnits[] = {{"milli", 1e-3},       {"ms", 1e-3},   {"micro", 1e-6},
                                {"us", 1e-6},          {"nano", 1e-9}, {"ns", 1e-9},
                                {"d", kSecondsPerDay}, {"h", 3600},    {"m", 60}};
    double seconds = 1;
    for (const Known& known : kUnits) {
        if (unit.rfind(known.prefix, 0) == 0) {
            seconds = known.seconds;
            break;
        }
    }
    return TimeUnits{*zero, seconds};
}

}  // namespace scan::cfradial

#endif
