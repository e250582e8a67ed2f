#include "library_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
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

QuietLibrary::QuietLibrary() {
    std::fflush(stdout);
    kept_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    if (nowhere < 0) return;
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

QuietLibrary::~QuietLibrary() {
    std::fflush(stdout);
    if (kept_ < 0) return;
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
}

}  // namespace cli
