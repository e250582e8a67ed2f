/* Calendar arithmetic against the civil calendar, and stamps. */
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstdint>
#include <string>

#include "base/calendar.h"
#include "clutterclassifier/Ctiempo.h"

namespace {

using clutter::base::DateTime;
using clutter::base::secondsSince1970;
using clutter::base::splitSeconds;

constexpr std::uint32_t kSecondsPerDay = 86400;
/* 2100-03-01, the first day that the library takes for the 29th of February. */
constexpr std::uint32_t kFirstDayBehind = 47541;
constexpr std::uint32_t kLastDay = UINT32_MAX / kSecondsPerDay;

std::chrono::year_month_day civilDate(std::uint32_t day) {
    return std::chrono::sys_days(std::chrono::days(day));
}

std::string text(const DateTime& t) {
    return std::to_string(t.year) + "-" + std::to_string(t.month) + "-" + std::to_string(t.day) +
           " " + std::to_string(t.hour) + ":" + std::to_string(t.minute) + ":" +
           std::to_string(t.second);
}

DateTime expectedAt(std::uint32_t day, int hour, int minute, int second) {
    if (day == kFirstDayBehind) {
        return {2100, 2, 29, hour, minute, second};
    }
    const auto date = civilDate(day > kFirstDayBehind ? day - 1 : day);
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            hour,
            minute,
            second};
}

TEST(Calendar, EveryHourOfAllSecondsAgreesWithTheCivilCalendarUntil2100) {
    for (std::uint32_t day = 0; day <= kLastDay; ++day) {
        for (int hour = 0; hour < 24; ++hour) {
            const std::uint64_t seconds = std::uint64_t{day} * kSecondsPerDay + hour * 3600 + 61;
            if (seconds > UINT32_MAX) {
                break;
            }
            const DateTime expected = expectedAt(day, hour, 1, 1);
            const DateTime split = splitSeconds(static_cast<std::uint32_t>(seconds));
            ASSERT_EQ(text(split), text(expected));
            ASSERT_EQ(secondsSince1970(split), seconds) << text(split);
        }
    }
}

TEST(Calendar, ValuesOutsideTheCalendarWrapAndNeverLeaveTheTables) {
    Ctiempo time;
    const unsigned january = time.GetSecondsSince1970(2014, 1, 1, 0, 0, 0);
    EXPECT_EQ(time.GetSecondsSince1970(2014, 0, 1, 0, 0, 0), january);
    EXPECT_EQ(time.GetSecondsSince1970(2014, INT_MIN, 1, 0, 0, 0), january);
    const unsigned nextJanuary = time.GetSecondsSince1970(2015, 1, 1, 0, 0, 0);
    EXPECT_EQ(time.GetSecondsSince1970(2014, 13, 1, 0, 0, 0), nextJanuary);
    EXPECT_EQ(time.GetSecondsSince1970(2014, INT_MAX, 1, 0, 0, 0), nextJanuary);
    EXPECT_EQ(time.GetSecondsSince1970(1969, 12, 31, 23, 59, 59), UINT32_MAX);
    EXPECT_EQ(time.GetSecondsSince1970(1970, 1, 1, 0, 0, -1), UINT32_MAX);
    for (const int year : {INT_MIN, INT_MAX}) {
        time.GetSecondsSince1970(year, 1, year, year, 0, 0);
    }
}

TEST(Calendar, CenturiesAreLeapYears) {
    Ctiempo time;
    for (const int year : {1900, 2000, 2100, 1972}) {
        EXPECT_EQ(time.GetSecondsSince1970(year, 3, 1, 0, 0, 0) -
                      time.GetSecondsSince1970(year, 2, 28, 0, 0, 0),
                  2 * kSecondsPerDay)
            << year;
    }
    EXPECT_EQ(time.GetSecondsSince1970(2013, 3, 1, 0, 0, 0) -
                  time.GetSecondsSince1970(2013, 2, 28, 0, 0, 0),
              kSecondsPerDay);
}

TEST(Ctiempo, SplitsIntoWhateverIsAskedFor) {
    Ctiempo time;
    int t[6];
    char date[11], clock[9];
    EXPECT_EQ(time.GetDateTime(86399, t, date, clock), 1);
    EXPECT_STREQ(date, "01/01/1970");
    EXPECT_STREQ(clock, "23:59:59");
    EXPECT_EQ(text({t[0], t[1], t[2], t[3], t[4], t[5]}), "1970-1-1 23:59:59");
    EXPECT_EQ(time.GetSecondsSince1970(t), 86399u);
    EXPECT_EQ(time.GetDateTime(UINT32_MAX, nullptr, date, nullptr), 1);
    EXPECT_STREQ(date, "06/02/2106");
    EXPECT_EQ(time.GetDateTime(86400, nullptr, nullptr, clock), 1);
    EXPECT_STREQ(clock, "00:00:00");
    EXPECT_EQ(time.GetSecondsSince1970(nullptr), 0u);
}

TEST(Ctiempo, ParsesStampsOfFourteenCharacters) {
    Ctiempo time;
    char stamp[] = "20100503040506";
    unsigned seconds = 1;
    int t[6];
    EXPECT_EQ(time.ReadYYYYMMDDHHMMSS(stamp, seconds, t), 1);
    EXPECT_EQ(text({t[0], t[1], t[2], t[3], t[4], t[5]}), "2010-5-3 4:5:6");
    EXPECT_EQ(seconds, 1272859506u);
    EXPECT_EQ(time.GetSecondsSince1970(t), seconds);
    EXPECT_EQ(time.ReadYYYYMMDDHHMMSS(stamp, seconds, nullptr), 1);
    char notANumber[] = "2010xx03 4050a";
    EXPECT_EQ(time.ReadYYYYMMDDHHMMSS(notANumber, seconds, t), 1);
    EXPECT_EQ(text({t[0], t[1], t[2], t[3], t[4], t[5]}), "2010-0-3 4:5:0");
}

TEST(Ctiempo, RefusesStampsOfAnotherLength) {
    Ctiempo time;
    char tooShort[] = "2010050304050", tooLong[] = "201005030405060", empty[] = "";
    for (char* stamp : {tooShort, tooLong, empty, static_cast<char*>(nullptr)}) {
        unsigned seconds = 1;
        int t[6] = {7, 7, 7, 7, 7, 7};
        EXPECT_EQ(time.ReadYYYYMMDDHHMMSS(stamp, seconds, t), 0);
        EXPECT_EQ(seconds, 0u);
        EXPECT_EQ(t[0], 7);
        int year = 7, month = 7, day = 7, hour = 7, minute = 7, second = 7;
        EXPECT_EQ(time.ReadYYYYMMDDHHMMSS(stamp, seconds, year, month, day, hour, minute, second),
                  1);
        EXPECT_EQ(text({year, month, day, hour, minute, second}), "0-0-0 0:0:0");
    }
}

TEST(Ctiempo, NowIsFixed) {
    Ctiempo time;
    EXPECT_EQ(time.timenow(), 1388534400u);
    int year, month, day, hour, minute, second;
    time.timenow(year, month, day, hour, minute, second);
    EXPECT_EQ(text({year, month, day, hour, minute, second}), "2014-1-1 0:0:0");
}

}  // namespace
