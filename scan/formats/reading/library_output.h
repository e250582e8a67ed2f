/* library_output.h - files that operations of the library write without saying how it went. */
#ifndef SCAN_FORMATS_READING_LIBRARY_OUTPUT_H
#define SCAN_FORMATS_READING_LIBRARY_OUTPUT_H

#include <cstddef>
#include <string>

namespace scan {

/* Whether the file is there with so many whole lines, or so many bytes: a full disk must not pass
 * unnoticed. errno stays that of the operation that wrote. */
bool holdsLines(const std::string& path, std::size_t lines);
bool holdsBytes(const std::string& path, std::size_t bytes);

}  // namespace scan

#endif
