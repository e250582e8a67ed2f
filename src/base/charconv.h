/*
 * charconv.h - std::from_chars and std::to_chars for doubles, also where the standard library has
 * them for integers only. Conversions are exact and know no locale.
 */
#ifndef CLUTTER_BASE_CHARCONV_H
#define CLUTTER_BASE_CHARCONV_H

#include <charconv>

#ifndef __cpp_lib_to_chars
#include <locale.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#endif

namespace clutter::base {

#ifdef __cpp_lib_to_chars
using std::from_chars;
using std::to_chars;
#else
/* The C library reads more than from_chars does: blanks and a plus sign before the number, and
 * "0x". These are left out before it is asked. */
inline std::from_chars_result from_chars(const char* first, const char* last, double& value,
                                         std::chars_format format = std::chars_format::general) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    const bool hex = format == std::chars_format::hex;
    std::string text(first, last);
    const std::size_t sign = !text.empty() && text[0] == '-' ? 1 : 0;
    const char begin = text.size() > sign ? text[sign] : '\0';
    const bool number = hex ? std::isxdigit(static_cast<unsigned char>(begin)) != 0 || begin == '.'
                            : (begin >= '0' && begin <= '9') || begin == '.';
    const bool word = begin != '\0' && std::string("iInN").find(begin) != std::string::npos;
    if (!number && !word) {
        return {first, std::errc::invalid_argument};
    }
    if (number && hex) {
        text.insert(sign, "0x");
    } else {
        text.erase(std::min(text.find_first_of("xX"), text.size()));
    }
    errno = 0;
    char* end = nullptr;
    const double found = strtod_l(text.c_str(), &end, plain);
    const std::ptrdiff_t read = end - text.c_str() - (number && hex ? 2 : 0);
    if (read <= static_cast<std::ptrdiff_t>(sign)) {
        return {first, std::errc::invalid_argument};
    }
    if (errno == ERANGE && (std::isinf(found) || found == 0.0)) {
        return {first + read, std::errc::result_out_of_range};
    }
    value = found;
    return {first + read, std::errc()};
}

/* The C library writes the same digits, with the decimal point of the locale. */
inline std::to_chars_result to_chars(char* first, char* last, double value,
                                     std::chars_format format, int precision) {
    const auto room = static_cast<std::size_t>(last - first);
    const bool fixed = format == std::chars_format::fixed;
    char text[512]; /* the largest double has 309 digits before the point */
    const int wanted = std::snprintf(text, sizeof text, fixed ? "%.*f" : "%.*g", precision, value);
    const std::string_view point = localeconv()->decimal_point;
    if (wanted < 0 || static_cast<std::size_t>(wanted) >= sizeof text) {
        return {last, std::errc::value_too_large};
    }
    std::string out(text, static_cast<std::size_t>(wanted));
    if (const std::size_t at = out.find(point); !point.empty() && at != std::string::npos) {
        out.replace(at, point.size(), ".");
    }
    if (out.size() > room) {
        return {last, std::errc::value_too_large};
    }
    return {std::copy(out.begin(), out.end(), first), std::errc()};
}
#endif

}  // namespace clutter::base

#endif
