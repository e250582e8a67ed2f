/*
 * calendar.h - dates and times of day as seconds since 1970-01-01 in UTC, and back.
 */
#ifndef SCAN_CALENDAR_H
#define SCAN_CALENDAR_H

#include <chrono>
#include <cmath>

#include "scan/scan.h"

namespace scan {

constexpr double kSecondsPerDay = 86400;

inline double secondsOf(const DateTime& time) {
    const std::chrono::sys_days day{std::chrono::year{time.year} /
                                    std::chrono::month{static_cast<unsigned>(time.month)} /
                                    std::chrono::day{static_cast<unsigned>(time.day)}};
    return static_cast<double>(day.time_since_epoch().count()) * kSecondsPerDay +
           time.hour * 3600.0 + time.minute * 60.0 + time.second;
}

/* Whole seconds: what is past the second is dropped. Seconds outside the years 1 to 9999 give the
 * default. */
inline DateTime dateTimeOf(double seconds) {
    constexpr double kMaxDays = 2932896;  // 9999-12-31
    const double days = std::floor(seconds / kSecondsPerDay);
    if (!(std::abs(days) < kMaxDays / 4) && !(days > 0 && days <= kMaxDays)) {
        return {};
    }
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<int>(days)}}};
    const auto second = static_cast<int>(seconds - days * kSecondsPerDay);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            second / 3600,
            second / 60 % 60,
            second % 60};
}

}  // namespace scan

#endif
