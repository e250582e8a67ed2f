/*
 * byte_cursor.h - reads numbers and strings from untrusted bytes.
 *
 * skip() is the only bounds check. Once it fails the cursor stays failed: everything read from then
 * on is 0 or an empty string, so that a parser can read a whole structure and check once at its
 * end. Big-endian numbers are built from bytes, whatever the byte order of the machine.
 */
#ifndef CLUTTER_BASE_FILES_BYTE_CURSOR_H
#define CLUTTER_BASE_FILES_BYTE_CURSOR_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace clutter::base {

using Bytes = std::span<const unsigned char>;

class ByteCursor {
  public:
    explicit ByteCursor(Bytes bytes) : rest_(bytes) {}

    bool failed() const { return failed_; }
    std::size_t remaining() const { return rest_.size(); }

    /* Moves past n bytes and returns them; an empty span and failure when there are fewer. */
    Bytes skip(std::size_t n) {
        failed_ = failed_ || n > rest_.size();
        if (failed_) {
            rest_ = {};
            return {};
        }
        const Bytes taken = rest_.first(n);
        rest_ = rest_.subspan(n);
        return taken;
    }

    /* The same for n elements of elementBytes each. The product may exceed std::size_t. */
    Bytes skipArray(std::size_t n, std::size_t elementBytes) {
        const bool fits = n <= rest_.size() / elementBytes;
        return skip(fits ? n * elementBytes : rest_.size() + 1);
    }

    std::uint16_t big16() {
        const Bytes b = skip(2);
        return b.empty() ? std::uint16_t{0} : static_cast<std::uint16_t>(b[0] << 8 | b[1]);
    }

    std::uint32_t big32() {
        const Bytes b = skip(4);
        if (b.empty()) {
            return 0;
        }
        return std::uint32_t{b[0]} << 24 | std::uint32_t{b[1]} << 16 | std::uint32_t{b[2]} << 8 |
               std::uint32_t{b[3]};
    }

    /* A number in the machine's own byte order. */
    template <class T>
    T native() {
        T value{};
        const Bytes b = skip(sizeof(T));
        if (!b.empty()) {
            std::memcpy(&value, b.data(), sizeof(T));
        }
        return value;
    }

    /* Copies exactly n bytes into a buffer of at least n + 1 and terminates it. */
    void text(char* destination, std::size_t n) {
        const Bytes b = skip(n);
        if (!b.empty()) {
            std::memcpy(destination, b.data(), n);
        }
        destination[b.size()] = '\0';
    }

  private:
    Bytes rest_;
    bool failed_ = false;
};

/* The bytes from an offset to the end; an empty span when the offset is past the end. */
inline Bytes bytesFrom(Bytes bytes, std::size_t offset) {
    return offset < bytes.size() ? bytes.subspan(offset) : Bytes{};
}

}  // namespace clutter::base

#endif
