/*
 * finite_option.h - numbers that commands take as options.
 */
#ifndef CLI_FINITE_OPTION_H
#define CLI_FINITE_OPTION_H

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <string>

namespace cli {

/* A check for options: "nan" and "inf" are numbers to the parser, but no decibels or metres. What
 * single precision cannot hold is none either. */
inline std::string isFinite(const std::string& text) {
    return std::fabs(std::strtod(text.c_str(), nullptr)) <= FLT_MAX ? ""
                                                                    : text + " is no finite number";
}

}  // namespace cli

#endif
