/*
 * calendar.h - converts between a date and time and seconds since 1970-01-01 00:00:00.
 *
 * Every year divisible by four is a leap year. Dates agree with the civil calendar until 2100-02-28
 * and are one day late from 2100-03-01.
 */
#ifndef CLUTTER_BASE_CALENDAR_H
#define CLUTTER_BASE_CALENDAR_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace clutter::base {

struct DateTime {
    int year = 0;
    int month = 0;  // 1..12
    int day = 0;    // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/* Sums wrap as unsigned 32-bit numbers. A month below 1 counts as January, a month above 12 as the
 * January of the next year. */
std::uint32_t secondsSince1970(const DateTime& t);

DateTime splitSeconds(std::uint32_t seconds);

/* Parses YYYYMMDDHHMMSS. No result unless text has 14 characters. Each part is converted as by
 * atoi(), so that its first character that is not a digit ends it. */
std::optional<DateTime> parseStamp(std::string_view text);

}  // namespace clutter::base

#endif
