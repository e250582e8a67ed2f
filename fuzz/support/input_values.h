/*
 * input_values.h - the bytes of a fuzzer as a few small numbers and many values.
 */
#ifndef CLUTTER_FUZZ_SUPPORT_INPUT_VALUES_H
#define CLUTTER_FUZZ_SUPPORT_INPUT_VALUES_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace clutter::fuzz {

/* Bytes are taken off the front; past the end there are zeros. */
class InputValues {
  public:
    InputValues(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    std::uint8_t byte() {
        std::uint8_t taken = 0;
        take(&taken, 1);
        return taken;
    }
    /* A number from 0 to below - 1. */
    int below(int limit) { return byte() % limit; }

    /* Any float, or one of a field's usual size: the bits of the input or steps of 1/16. */
    float value() {
        std::uint32_t bits = 0;
        take(&bits, 3);
        if ((bits & 0xF) == 0xF) {
            return strange(static_cast<int>(bits >> 4 & 0xF));
        }
        return static_cast<float>(static_cast<std::int16_t>(bits >> 4)) / 16.0f;
    }
    std::vector<float> values(std::size_t n) {
        std::vector<float> many(n);
        std::generate(many.begin(), many.end(), [&] { return value(); });
        return many;
    }

  private:
    void take(void* out, std::size_t bytes) {
        const std::size_t there = std::min(bytes, left_);
        if (there > 0) {
            std::memcpy(out, data_, there);
        }
        data_ += there;
        left_ -= there;
    }
    static float strange(int choice) {
        using Limits = std::numeric_limits<float>;
        const float choices[16] = {NAN,
                                   Limits::infinity(),
                                   -Limits::infinity(),
                                   -0.0f,
                                   0.0f,
                                   Limits::max(),
                                   -Limits::max(),
                                   Limits::denorm_min(),
                                   Limits::min(),
                                   -999.0f,
                                   -32.0f,
                                   1e-30f,
                                   1e30f,
                                   1.0f,
                                   3.0f,
                                   5.0f};
        return choices[choice];
    }

    const std::uint8_t* data_;
    std::size_t left_;
};

}  // namespace clutter::fuzz

#endif
