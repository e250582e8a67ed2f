/* library_output.h - files that operations of the library write without saying how it went. */
#ifndef CLI_LIBRARY_OUTPUT_H
#define CLI_LIBRARY_OUTPUT_H

#include <cstddef>
#include <string>

namespace cli {

/* Throw std::runtime_error unless the file is there with so many whole lines, or so many bytes: a
 * full disk must not pass unnoticed. */
void requireLines(const std::string& path, size_t lines);
void requireBytes(const std::string& path, size_t bytes);

}  // namespace cli

#endif
