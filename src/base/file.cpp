#include "base/file.h"

#include <algorithm>

namespace clutter::base {

namespace {

constexpr std::size_t kFirstChunkBytes = std::size_t{64} << 10;

/* Size of a seekable stream, 0 when it does not tell; the position is left where it was. */
std::size_t sizeOf(std::FILE* stream) {
    const long here = std::ftell(stream);
    if (here < 0 || std::fseek(stream, 0, SEEK_END) != 0) return 0;
    const long end = std::ftell(stream);
    if (std::fseek(stream, here, SEEK_SET) != 0) return 0;
    return end < 0 ? 0 : static_cast<std::size_t>(end);
}

/* Room for the next read: at once the whole file and one byte more (so that the read meets the
 * end), or twice as much where the size is not known or no longer true. 0 beyond the bounds. */
std::size_t nextCapacity(std::size_t used, std::size_t fileBytes) {
    if (fileBytes > kMaxFileBytes) return 0;
    if (fileBytes >= used) return fileBytes + 1;
    return used >= kMaxStreamBytes ? 0 : std::min(2 * used, kMaxStreamBytes);
}

}  // namespace

File openFile(const char* path, const char* mode) {
    return File(path == nullptr ? nullptr : std::fopen(path, mode));
}

bool closeChecked(File file) {
    if (!file) return false;
    const bool failed = std::ferror(file.get()) != 0;
    return std::fclose(file.release()) == 0 && !failed;
}

std::optional<std::vector<unsigned char>> readWholeFile(const char* path) {
    const File file = openFile(path, "rb");
    if (!file) return std::nullopt;
    std::vector<unsigned char> bytes(kFirstChunkBytes);
    std::size_t used = 0;
    for (;;) {
        used += std::fread(bytes.data() + used, 1, bytes.size() - used, file.get());
        if (std::ferror(file.get())) return std::nullopt;
        if (used < bytes.size()) break;
        const std::size_t capacity = nextCapacity(used, sizeOf(file.get()));
        if (capacity == 0) return std::nullopt;
        bytes.resize(capacity);
    }
    bytes.resize(used);
    // Small files do not keep a large chunk, and a reader beyond their end is beyond the memory.
    if (used < kFirstChunkBytes) bytes.shrink_to_fit();
    return bytes;
}

}  // namespace clutter::base
