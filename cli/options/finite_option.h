/* finite_option.h - a check for options that are numbers. */
#ifndef CLI_OPTIONS_FINITE_OPTION_H
#define CLI_OPTIONS_FINITE_OPTION_H

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <string>

namespace cli {

/* The parser accepts "nan" and "inf", which are neither decibels nor metres, and the library
 * holds numbers in single precision. */
inline std::string isFinite(const std::string& text) {
    const bool hasDigits = text.find_first_of("0123456789") != std::string::npos;
    if (std::fabs(std::strtod(text.c_str(), nullptr)) <= FLT_MAX) {
        return "";
    }
    return text + (hasDigits ? " is too large for single precision" : " is not a finite number");
}

}  // namespace cli

#endif
