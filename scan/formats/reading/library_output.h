/* library_output.h - checks of files that operations of the library write without a result code. */
#ifndef SCAN_FORMATS_READING_LIBRARY_OUTPUT_H
#define SCAN_FORMATS_READING_LIBRARY_OUTPUT_H

#include <cstddef>
#include <string>

namespace scan {

/* Whether the file exists with this many whole lines or bytes: a full disk must not pass unnoticed.
 * errno stays that of the operation that wrote. */
bool holdsLines(const std::string& path, std::size_t lines);
bool holdsBytes(const std::string& path, std::size_t bytes);

}  // namespace scan

#endif
