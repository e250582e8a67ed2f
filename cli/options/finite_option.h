/*
 * finite_option.h - numbers that commands take as options.
 */
#ifndef CLI_OPTIONS_FINITE_OPTION_H
#define CLI_OPTIONS_FINITE_OPTION_H

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <string>

namespace cli {

/* A check for options: "nan" and "inf" are numbers to the parser, but no decibels or metres, and
 * the library holds them in single precision. */
inline std::string isFinite(const std::string& text) {
    const bool hasDigits = text.find_first_of("0123456789") != std::string::npos;
    if (std::fabs(std::strtod(text.c_str(), nullptr)) <= FLT_MAX) return "";
    return text + (hasDigits ? " is beyond single precision" : " is no finite number");
}

}  // namespace cli

#endif
