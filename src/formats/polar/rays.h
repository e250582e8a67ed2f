/*
 * rays.h - rays of a polar data file piece by piece.
 *
 * Readers of this format fill one buffer after the other without checking how many bytes arrived:
 * in a file that ends early, a buffer keeps its previous bytes. The two classes reproduce this
 * without reading past the end.
 */
#ifndef CLUTTER_FORMATS_POLAR_RAYS_H
#define CLUTTER_FORMATS_POLAR_RAYS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "base/files/byte_cursor.h"

namespace clutter::formats {

class StaleReader {
  public:
    explicit StaleReader(base::Bytes bytes) : rest_(bytes) {}

    /* Fills the first bytes of a buffer with those that remain, at most n; returns their number. */
    std::size_t read(unsigned char* buffer, std::size_t n) {
        const std::size_t held = std::min(n, rest_.size());
        std::copy_n(rest_.begin(), held, buffer);
        rest_ = rest_.subspan(held);
        return held;
    }
    base::Bytes rest() const { return rest_; }

  private:
    base::Bytes rest_;
};

/*
 * The bytes of one ray after the other, as if read in pieces of unit bytes into one buffer of that
 * size: past the end of the file, each piece repeats the previous one, also across rays. The buffer
 * starts with zeros. bytes is a multiple of unit.
 */
class RayBytes {
  public:
    RayBytes(std::size_t bytes, std::size_t unit) : bytes_(bytes, 0), unit_(unit) {}

    void read(StaleReader& file) {
        const std::size_t held = file.read(bytes_.data(), bytes_.size());
        const std::size_t lastUnit = bytes_.size() - unit_;  // of the ray before
        for (std::size_t i = held; i < unit_; ++i) {
            bytes_[i] = bytes_[lastUnit + i];
        }
        for (std::size_t i = std::max(held, unit_); i < bytes_.size(); ++i) {
            bytes_[i] = bytes_[i - unit_];
        }
    }
    const unsigned char* data() const { return bytes_.data(); }

    std::uint16_t word(std::size_t index) const {
        std::uint16_t value;
        std::memcpy(&value, bytes_.data() + 2 * index, sizeof value);
        return value;
    }

  private:
    std::vector<unsigned char> bytes_;
    std::size_t unit_;
};

}  // namespace clutter::formats

#endif
