/*
 * Whole files into memory: in one read where the size is known, in growing pieces otherwise.
 */
#include "base/files/file.h"

#include <algorithm>

namespace clutter::base {

namespace {

constexpr std::size_t kFirstChunkBytes = std::size_t{64} << 10;

/* Size of a seekable stream, 0 when it is unknown. The position does not change. */
std::size_t sizeOf(std::FILE* stream) {
    const long here = std::ftell(stream);
    if (here < 0 || std::fseek(stream, 0, SEEK_END) != 0) {
        return 0;
    }
    const long end = std::ftell(stream);
    if (std::fseek(stream, here, SEEK_SET) != 0) {
        return 0;
    }
    return end < 0 ? 0 : static_cast<std::size_t>(end);
}

/* Buffer size for the next read: the whole file and one byte more (so that the read meets the end),
 * or twice the present size where the file size is unknown or out of date. 0 past the bounds. */
std::size_t nextCapacity(std::size_t used, std::size_t fileBytes) {
    if (fileBytes > kMaxFileBytes) {
        return 0;
    }
    if (fileBytes >= used) {
        return fileBytes + 1;
    }
    return used >= kMaxStreamBytes ? 0 : std::min(2 * used, kMaxStreamBytes);
}

/* Follows the length of the current line through a text that arrives in pieces. */
class LineLength {
  public:
    /* False once a line is too long. */
    bool follow(const unsigned char* piece, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
            length_ = piece[i] == '\n' || piece[i] == '\r' ? 0 : length_ + 1;
            if (length_ > kMaxLineBytes) {
                return false;
            }
        }
        return true;
    }

  private:
    std::size_t length_ = 0;
};

/* When accept(piece, n) returns false, reading stops without a result. */
template <class Accept>
std::optional<std::vector<unsigned char>> readFile(const char* path, Accept accept) {
    const File file = openFile(path, "rb");
    if (!file) {
        return std::nullopt;
    }
    std::vector<unsigned char> bytes(kFirstChunkBytes);
    std::size_t used = 0;
    for (;;) {
        unsigned char* const to = bytes.data() + used;
        const std::size_t n = std::fread(to, 1, bytes.size() - used, file.get());
        if (std::ferror(file.get()) || !accept(to, n)) {
            return std::nullopt;
        }
        used += n;
        if (used < bytes.size()) {
            break;
        }
        const std::size_t capacity = nextCapacity(used, sizeOf(file.get()));
        if (capacity == 0) {
            return std::nullopt;
        }
        bytes.resize(capacity);
    }
    bytes.resize(used);
    // Small files do not keep a large chunk. It also lets sanitizers see reads past the end.
    if (used < kFirstChunkBytes) {
        bytes.shrink_to_fit();
    }
    return bytes;
}

}  // namespace

File openFile(const char* path, const char* mode) {
    return File(path == nullptr ? nullptr : std::fopen(path, mode));
}

bool closeChecked(File file) {
    if (!file) {
        return false;
    }
    const bool failed = std::ferror(file.get()) != 0;
    return std::fclose(file.release()) == 0 && !failed;
}

std::optional<std::vector<unsigned char>> readWholeFile(const char* path) {
    return readFile(path, [](const unsigned char*, std::size_t) { return true; });
}

std::optional<std::vector<unsigned char>> readTextFile(const char* path) {
    LineLength line;
    return readFile(
        path, [&line](const unsigned char* piece, std::size_t n) { return line.follow(piece, n); });
}

}  // namespace clutter::base
