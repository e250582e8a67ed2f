/* A compressed file, unpacked into one without a name. */
#include "scan/formats/compressed/unpacked_file.h"

#include <fcntl.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/mman.h>
#endif

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include "scan/formats/compressed/decompress.h"

namespace scan {
namespace {

/* Sweeps without an echo compress to a few hundredths of their size; a file that grows by a larger
 * factor is not a radar file. */
constexpr std::uint64_t kAlwaysAllowedBytes = 64 << 20;
constexpr std::uint64_t kMaxGrowth = 300;

int openNameless() {
#ifdef __linux__
    return memfd_create("clutterclassifier", MFD_CLOEXEC);
#else
    std::string name = (std::filesystem::temp_directory_path() / "clutterXXXXXX").string();
    const int descriptor = mkstemp(name.data());
    unlink(name.c_str());
    return descriptor;
#endif
}

}  // namespace

UnpackedFile::UnpackedFile(const std::string& packed) : descriptor_(openNameless()) {
    if (descriptor_ < 0) {
        throw std::runtime_error(std::string("cannot be unpacked: ") + std::strerror(errno));
    }
    path_ = "/dev/fd/" + std::to_string(descriptor_);
    const std::uint64_t limit =
        kAlwaysAllowedBytes + kMaxGrowth * std::filesystem::file_size(packed);
    try {
        unpackFile(packed, limit,
                   [this](const std::uint8_t* bytes, std::size_t size) { add(bytes, size); });
    } catch (...) {
        close(descriptor_);
        throw;
    }
}

UnpackedFile::~UnpackedFile() {
    close(descriptor_);
}

void UnpackedFile::add(const unsigned char* bytes, std::size_t size) const {
    while (size > 0) {
        const ssize_t written = write(descriptor_, bytes, size);
        if (written <= 0) {
            throw std::runtime_error(std::string("cannot be unpacked: ") + std::strerror(errno));
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
}

}  // namespace scan
