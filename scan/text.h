/* text.h - strings as files and users write them. */
#ifndef SCAN_TEXT_H
#define SCAN_TEXT_H

#include <string>

namespace scan {

std::string lowerCase(std::string text);

/* The ending of a path in lower case, with its dot: ".uf". */
std::string endingOf(const std::string& path);

/* Files may hold any bytes: those that are not printable become '?', blanks at the end go. */
std::string printable(const std::string& text);

}  // namespace scan

#endif
