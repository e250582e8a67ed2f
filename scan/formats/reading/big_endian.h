/*
 * big_endian.h - numbers at places in a block of bytes, the high byte first; the one bounds check
 * of readers of such files.
 */
#ifndef SCAN_FORMATS_READING_BIG_ENDIAN_H
#define SCAN_FORMATS_READING_BIG_ENDIAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace scan {

/* Borrows bytes. Reading past the end gives 0 and is remembered. */
class BigEndian {
  public:
    BigEndian() = default;
    BigEndian(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    [[nodiscard]] const std::uint8_t* bytes() const { return bytes_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool failed() const { return failed_; }
    [[nodiscard]] bool holds(std::size_t at, std::size_t count) const {
        return at <= size_ && count <= size_ - at;
    }

    /* From at on, count bytes at most. */
    [[nodiscard]] BigEndian part(std::size_t at, std::size_t count = SIZE_MAX) const {
        if (at >= size_) {
            return {bytes_ + size_, 0};
        }
        return {bytes_ + at, count < size_ - at ? count : size_ - at};
    }

    std::uint8_t u8(std::size_t at) { return static_cast<std::uint8_t>(number(at, 1)); }
    std::uint16_t u16(std::size_t at) { return static_cast<std::uint16_t>(number(at, 2)); }
    std::int16_t i16(std::size_t at) { return static_cast<std::int16_t>(u16(at)); }
    std::uint32_t u32(std::size_t at) { return number(at, 4); }
    float f32(std::size_t at) {
        const std::uint32_t bits = u32(at);
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    std::string text(std::size_t at, std::size_t count) {
        failed_ |= !holds(at, count);
        return failed_ ? "" : std::string(reinterpret_cast<const char*>(bytes_ + at), count);
    }

  private:
    std::uint32_t number(std::size_t at, std::size_t count) {
        failed_ |= !holds(at, count);
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count && holds(at, count); ++i) {
            value = value << 8 | bytes_[at + i];
        }
        return value;
    }

    const std::uint8_t* bytes_ = nullptr;
    std::size_t size_ = 0;
    bool failed_ = false;
};

}  // namespace scan

#endif
