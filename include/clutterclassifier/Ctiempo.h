/**
 * @file Ctiempo.h
 * Calendar conversions between a date and time and seconds since 1970-01-01 00:00:00.
 */
#ifndef CLUTTERCLASSIFIER_CTIEMPO_H
#define CLUTTERCLASSIFIER_CTIEMPO_H

#include "clutterclassifier/export.h"

/**
 * Stateless. A date-time array is six ints: year, month (1..12), day (1..31), hour, minute, second.
 * Every year divisible by four is a leap year (1900 and 2100 too): radar data lie between 1970 and
 * 2099. Months above 12 count as the next January, months below 1 as January; sums wrap as unsigned
 * 32-bit numbers.
 */
class CLUTTERCLASSIFIER_EXPORT Ctiempo {
  public:
    Ctiempo();
    ~Ctiempo();
    Ctiempo(const Ctiempo&) = delete;
    Ctiempo& operator=(const Ctiempo&) = delete;

    /** Seconds since 1970 of a date-time array; 0 for a null array. */
    unsigned int GetSecondsSince1970(int* t);

    /** The same of six values. */
    unsigned int GetSecondsSince1970(int year, int month, int day, int hour, int minute,
                                     int second);

    /**
     * Splits seconds since 1970. Each output may be null: t receives six ints, date "DD/MM/YYYY"
     * (11 characters with the terminator), time "HH:MM:SS" (9 characters). Returns 1.
     */
    int GetDateTime(unsigned int seconds, int* t, char* date, char* time);

    /**
     * Parses a 14-digit stamp YYYYMMDDHHMMSS. Returns 1; 0 with seconds = 0 and t untouched when
     * text is null or not 14 characters long. t may be null.
     */
    int ReadYYYYMMDDHHMMSS(char* text, unsigned int& seconds, int* t);

    /** The same into six variables, all 0 for a text of the wrong length. Always returns 1. */
    int ReadYYYYMMDDHHMMSS(char* text, unsigned int& seconds, int& year, int& month, int& day,
                           int& hour, int& minute, int& second);

    /** The library's "now" is fixed, so that results repeat: 2014-01-01 00:00:00. It does not read
     * the clock. */
    unsigned int timenow();
    void timenow(int& year, int& month, int& day, int& hour, int& minute, int& second);
};

#endif
