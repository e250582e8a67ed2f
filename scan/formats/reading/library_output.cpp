/* Counts the lines and bytes of a written file. */
#include "scan/formats/reading/library_output.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace scan {
namespace {

class KeptErrno {
  public:
    KeptErrno() = default;
    ~KeptErrno() { errno = value_; }
    KeptErrno(const KeptErrno&) = delete;
    KeptErrno& operator=(const KeptErrno&) = delete;

  private:
    int value_ = errno;
};

}  // namespace

bool holdsLines(const std::string& path, std::size_t lines) {
    const KeptErrno kept;
    std::ifstream file(path, std::ios::binary);
    const auto found =
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
    return file && static_cast<std::size_t>(found) == lines;
}

bool holdsBytes(const std::string& path, std::size_t bytes) {
    const KeptErrno kept;
    std::error_code error;
    return std::filesystem::file_size(path, error) == bytes && !error;
}

}  // namespace scan
