/* opened_file.h - files for reading, with the reason where one cannot be opened. */
#ifndef SCAN_OPENED_FILE_H
#define SCAN_OPENED_FILE_H

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

namespace scan {

/* Throws std::runtime_error with the system's reason. */
inline std::ifstream openToRead(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(errno != 0 ? std::strerror(errno) : "cannot be opened");
    }
    return file;
}

/* For operations of the library that fail without a reason: throws that the file cannot be opened,
 * if it cannot, else otherwise. */
[[noreturn]] inline void failReading(const std::string& path, const std::string& otherwise) {
    openToRead(path);
    throw std::runtime_error(otherwise);
}

}  // namespace scan

#endif
