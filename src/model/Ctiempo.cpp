/*
 * Calendar operations: arrays, texts and single variables on top of base/calendar.h.
 */
#include "clutterclassifier/Ctiempo.h"

#include <cstddef>
#include <cstdio>
#include <string_view>

#include "base/calendar.h"

using clutter::base::DateTime;
using clutter::base::parseStamp;
using clutter::base::secondsSince1970;
using clutter::base::splitSeconds;

namespace {

/* The library's "now". */
constexpr DateTime kNow{2014, 1, 1, 0, 0, 0};

constexpr std::size_t kDateCapacity = sizeof "DD/MM/YYYY";
constexpr std::size_t kTimeCapacity = sizeof "HH:MM:SS";

void store(const DateTime& from, int* t) {
    if (t == nullptr) {
        return;
    }
    t[0] = from.year;
    t[1] = from.month;
    t[2] = from.day;
    t[3] = from.hour;
    t[4] = from.minute;
    t[5] = from.second;
}

}  // namespace

Ctiempo::Ctiempo() {}

Ctiempo::~Ctiempo() {}

unsigned int Ctiempo::GetSecondsSince1970(int* t) {
    if (t == nullptr) {
        return 0;
    }
    return secondsSince1970({t[0], t[1], t[2], t[3], t[4], t[5]});
}

unsigned int Ctiempo::GetSecondsSince1970(int year, int month, int day, int hour, int minute,
                                          int second) {
    return secondsSince1970({year, month, day, hour, minute, second});
}

int Ctiempo::GetDateTime(unsigned int seconds, int* t, char* date, char* time) {
    const DateTime split = splitSeconds(seconds);
    store(split, t);
    if (date != nullptr) {
        std::snprintf(date, kDateCapacity, "%.2d/%.2d/%.4d", split.day, split.month, split.year);
    }
    if (time != nullptr) {
        std::snprintf(time, kTimeCapacity, "%.2d:%.2d:%.2d", split.hour, split.minute,
                      split.second);
    }
    return 1;
}

int Ctiempo::ReadYYYYMMDDHHMMSS(char* text, unsigned int& seconds, int* t) {
    seconds = 0;
    const auto stamp = parseStamp(text == nullptr ? std::string_view() : std::string_view(text));
    if (!stamp) {
        return 0;
    }
    store(*stamp, t);
    seconds = secondsSince1970(*stamp);
    return 1;
}

int Ctiempo::ReadYYYYMMDDHHMMSS(char* text, unsigned int& seconds, int& year, int& month, int& day,
                                int& hour, int& minute, int& second) {
    int t[6] = {};
    ReadYYYYMMDDHHMMSS(text, seconds, t);
    year = t[0];
    month = t[1];
    day = t[2];
    hour = t[3];
    minute = t[4];
    second = t[5];
    return 1;
}

unsigned int Ctiempo::timenow() {
    return secondsSince1970(kNow);
}

void Ctiempo::timenow(int& year, int& month, int& day, int& hour, int& minute, int& second) {
    int t[6];
    GetDateTime(timenow(), t, nullptr, nullptr);
    year = t[0];
    month = t[1];
    day = t[2];
    hour = t[3];
    minute = t[4];
    second = t[5];
}
