/*
 * calendar.h - calendar arithmetic between a date and time and seconds since 1970-01-01 00:00:00.
 *
 * Every year divisible by four is a leap year: from 2100-03-01 on, dates lie one day behind the
 * civil calendar. Up to then they agree with it.
 */
#ifndef CLUTTER_BASE_CALENDAR_H
#define CLUTTER_BASE_CALENDAR_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace clutter::base {

struct DateTime {
    int year = 0;
    int month = 0; /* 1..12 */
    int day = 0;   /* 1..31 */
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/* Sums wrap as unsigned 32-bit numbers, whatever the values. A month below 1 counts as 1, a month
 * above 12 as the one after December. */
std::uint32_t secondsSince1970(const DateTime& t);

DateTime splitSeconds(std::uint32_t seconds);

/* Parses YYYYMMDDHHMMSS; nothing unless text has 14 characters. Each part is converted as atoi()
 * does, so that what is no digit ends it. */
std::optional<DateTime> parseStamp(std::string_view text);

}  // namespace clutter::base

#endif
