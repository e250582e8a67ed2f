/* nameless_file.h - files that exist in memory only: "/dev/fd/5" opens one, but leads to no name.
 */
#ifndef SCAN_FORMATS_READING_NAMELESS_FILE_H
#define SCAN_FORMATS_READING_NAMELESS_FILE_H

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "scan/opened_file.h"

namespace scan {

/* The HDF5 library resolves links before it opens a file, and so cannot open one. */
inline bool isNameless(const std::string& path) {
    std::error_code error;
    const std::filesystem::path target = std::filesystem::read_symlink(path, error);
    return !error && !std::filesystem::exists(target, error);
}

inline std::vector<std::uint8_t> bytesOf(const std::string& path) {
    std::vector<std::uint8_t> bytes(std::filesystem::file_size(path));
    std::ifstream file = openToRead(path);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!file) {
        throw std::runtime_error("cannot be read");
    }
    return bytes;
}

}  // namespace scan

#endif
