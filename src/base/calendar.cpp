/*
 * Calendar arithmetic in whole days, with a leap year every four years.
 */
#include "base/calendar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace clutter::base {

namespace {

/* Days before month 1..12, then the length of the year. */
constexpr int kDaysBeforeLeap[13] = {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366};
constexpr int kDaysBeforeCommon[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

constexpr std::int64_t kEpoch = 1970;
constexpr std::size_t kStampLength = 14;

bool isLeap(std::int64_t year) {
    return year % 4 == 0;
}

const int* daysBefore(std::int64_t year) {
    return isLeap(year) ? kDaysBeforeLeap : kDaysBeforeCommon;
}

/* Days from 1970-01-01 to the first of January of a year. */
std::int64_t daysToYear(std::int64_t year) {
    const std::int64_t leapDays = isLeap(year) ? (year - kEpoch) / 4 : (year - kEpoch + 1) / 4;
    return (year - kEpoch) * 365 + leapDays;
}

/* Year, month and day of a number of days since 1970. */
void setDate(std::int64_t days, DateTime& t) {
    const std::int64_t leapDays = (days / 365 + 1) / 4;
    const double years = static_cast<double>(days) / 365.0 - static_cast<double>(leapDays) / 365.0;
    t.year = static_cast<int>(kEpoch) + static_cast<int>(years);
    const std::int64_t dayOfYear = days - daysToYear(t.year);
    const int* table = daysBefore(t.year);
    const int* found = std::find_if(table + 1, table + 13, [&](int d) { return d > dayOfYear; });
    if (found == table + 13) {
        t.year += 1;
        t.month = t.day = 1;
        return;
    }
    t.month = static_cast<int>(found - table);
    t.day = static_cast<int>(dayOfYear) - found[-1] + 1;
}

}  // namespace

std::uint32_t secondsSince1970(const DateTime& t) {
    const std::int64_t month = std::clamp<std::int64_t>(t.month, 1, 13);
    const std::int64_t days = daysToYear(t.year) + daysBefore(t.year)[month - 1] + t.day - 1;
    const auto wrapped = [](std::int64_t value) { return static_cast<std::uint32_t>(value); };
    return ((wrapped(days) * 24u + wrapped(t.hour)) * 60u + wrapped(t.minute)) * 60u +
           wrapped(t.second);
}

DateTime splitSeconds(std::uint32_t seconds) {
    DateTime t;
    t.second = static_cast<int>(seconds % 60);
    t.minute = static_cast<int>(seconds / 60 % 60);
    const std::int64_t hours = seconds / 3600;
    t.hour = static_cast<int>(hours % 24);
    setDate(hours / 24, t);
    return t;
}

std::optional<DateTime> parseStamp(std::string_view text) {
    if (text.size() != kStampLength) {
        return std::nullopt;
    }
    const auto part = [&](std::size_t from, std::size_t length) {
        return std::atoi(std::string(text.substr(from, length)).c_str());
    };
    return DateTime{part(0, 4), part(4, 2), part(6, 2), part(8, 2), part(10, 2), part(12, 2)};
}

}  // namespace clutter::base
