/*
 * polar_bytes.h - polar data files built word by word, with no help from the library.
 */
#ifndef CLUTTER_TESTS_FORMATS_POLAR_BYTES_H
#define CLUTTER_TESTS_FORMATS_POLAR_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>

#include "support/temp_dir.h"

namespace clutter::test {

class PolarBytes {
  public:
    explicit PolarBytes(int product, int nrays = 2, int ngates = 3) : bytes_(320, 0) {
        std::memcpy(bytes_.data(), "RADF\x80\x03\xC0\x01", 8);
        set(168, product).set(112, nrays).set(114, ngates).set(116, 300).set(130, 1234);
        set(24, 2007).set(26, 8).set(28, 10).set(30, 18).set(32, 20).set(34, 5);
        set(120, 3600).set(124, 900).set(274, 15);
    }

    PolarBytes& set(std::size_t offset, int value) {
        const auto word = static_cast<std::uint16_t>(value);
        if (offset + 2 > bytes_.size()) {
            bytes_.resize(offset + 2, 0);
        }
        std::memcpy(bytes_.data() + offset, &word, 2);
        return *this;
    }
    PolarBytes& text(std::size_t offset, const std::string& letters) {
        std::memcpy(bytes_.data() + offset, letters.data(), letters.size());
        return *this;
    }
    /* A ray's header, then its gates. */
    PolarBytes& ray(int azimuthWord, const ByteVector& gates, int elevationWord = 0) {
        const std::size_t at = bytes_.size();
        bytes_.resize(at + 10, 0);
        set(at + 2, azimuthWord).set(at + 4, elevationWord);
        return append(gates);
    }
    PolarBytes& append(const ByteVector& more) {
        bytes_.insert(bytes_.end(), more.begin(), more.end());
        return *this;
    }
    int word(std::size_t offset) const {
        std::int16_t word;
        std::memcpy(&word, bytes_.data() + offset, 2);
        return word;
    }
    const ByteVector& bytes() const { return bytes_; }

  private:
    ByteVector bytes_;
};

inline ByteVector randomBytes(std::size_t n, std::mt19937& random) {
    ByteVector bytes(n);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

/* A whole file of random gates of gateBytes each, with a layer after the rays if wanted. */
inline PolarBytes randomPolarFile(int product, std::size_t gateBytes, bool layer, int nrays,
                                  int ngates, std::mt19937& random) {
    PolarBytes file(product, nrays, ngates);
    for (int r = 0; r < nrays; ++r) {
        file.ray(36000 / nrays * r,
                 randomBytes(gateBytes * static_cast<std::size_t>(ngates), random), 10 * r);
    }
    if (layer) {
        file.append(randomBytes(static_cast<std::size_t>(nrays * ngates), random));
    }
    return file;
}

}  // namespace clutter::test

#endif
