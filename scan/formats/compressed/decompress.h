/* decompress.h - bytes compressed with bzip2 or gzip, unpacked within a limit. */
#ifndef SCAN_FORMATS_COMPRESSED_DECOMPRESS_H
#define SCAN_FORMATS_COMPRESSED_DECOMPRESS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace scan {

/* Unpacks into out what is whole, at most maxBytes. False if the data are damaged or cut, or if
 * they are more than that. */
bool unpackBzip2(const std::uint8_t* bytes, std::size_t size, std::size_t maxBytes,
                 std::vector<std::uint8_t>& out);

/* Throws std::runtime_error in a build without bzip2, where nothing can be unpacked. */
void requireBzip2();

/* Receives pieces of bytes. */
using Sink = std::function<void(const std::uint8_t* bytes, std::size_t size)>;

/* Unpacks a file compressed with gzip or bzip2, several members too. Throws std::runtime_error if
 * it is damaged or cut, or if it grows to more than maxBytes. */
void unpackFile(const std::string& path, std::uint64_t maxBytes, const Sink& sink);

/* Writes a file compressed with gzip. Throws std::runtime_error. */
void packFile(const std::string& from, const std::string& to);

}  // namespace scan

#endif
