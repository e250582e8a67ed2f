#include "library_output.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace cli {

void requireLines(const std::string& path, size_t lines) {
    std::ifstream file(path, std::ios::binary);
    const auto found =
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
    if (!file || static_cast<size_t>(found) != lines)
        throw std::runtime_error("cannot write " + path);
}

void requireBytes(const std::string& path, size_t bytes) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) != bytes || error)
        throw std::runtime_error("cannot write " + path);
}

}  // namespace cli
