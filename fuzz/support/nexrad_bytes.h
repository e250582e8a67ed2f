/* nexrad_bytes.h - NEXRAD Level 2 volumes built word by word, for seeds. */
#ifndef CLUTTER_FUZZ_SUPPORT_NEXRAD_BYTES_H
#define CLUTTER_FUZZ_SUPPORT_NEXRAD_BYTES_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace clutter::fuzz {

/* Big-endian words at fixed offsets; bytes that nothing is put into are 0. */
class BigEndianBytes {
  public:
    explicit BigEndianBytes(std::size_t size) : bytes_(size, 0) {}

    BigEndianBytes& text(std::size_t offset, const std::string& letters) {
        std::copy(letters.begin(), letters.end(), bytes_.begin() + static_cast<long>(offset));
        return *this;
    }
    BigEndianBytes& u8(std::size_t offset, unsigned value) { return put(offset, value, 1); }
    BigEndianBytes& u16(std::size_t offset, unsigned value) { return put(offset, value, 2); }
    BigEndianBytes& u32(std::size_t offset, unsigned value) { return put(offset, value, 4); }
    BigEndianBytes& f32(std::size_t offset, float value) {
        return u32(offset, std::bit_cast<std::uint32_t>(value));
    }
    const test::ByteVector& bytes() const { return bytes_; }

  private:
    BigEndianBytes& put(std::size_t offset, unsigned value, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            bytes_[offset + i] = static_cast<unsigned char>(value >> 8 * (count - 1 - i));
        }
        return *this;
    }

    test::ByteVector bytes_;
};

inline test::ByteVector joined(std::initializer_list<test::ByteVector> parts) {
    test::ByteVector all;
    for (const test::ByteVector& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

constexpr unsigned kNexradDay = 17000;  // 1 is 1970-01-01

/* The header in front of every message: its length in words of 16 bits, and its type. */
inline test::ByteVector nexradHeader(std::size_t bodyBytes, unsigned type) {
    return BigEndianBytes(28)
        .u16(12, static_cast<unsigned>((bodyBytes + 16) / 2))
        .u8(15, type)
        .u16(18, kNexradDay)
        .bytes();
}

inline test::ByteVector nexradMoment(const std::string& name, const test::ByteVector& codes,
                                     bool words = false) {
    const auto gates = static_cast<unsigned>(words ? codes.size() / 2 : codes.size());
    BigEndianBytes head(28);
    head.text(0, "D" + name).u16(8, gates).u16(10, 2125).u16(12, 250).u8(19, words ? 16 : 8);
    return joined({head.f32(20, 2).f32(24, 66).bytes(), codes});
}

/* A radial: three blocks of constants, and the moments of its gates. */
inline test::ByteVector nexradRadial(float azimuth, unsigned elevation, unsigned status,
                                     const std::vector<test::ByteVector>& moments) {
    const auto volume = BigEndianBytes(44).text(0, "RVOL").f32(8, 41.5f).f32(12, -93.5f);
    std::vector<test::ByteVector> blocks = {
        BigEndianBytes(volume).u16(16, 300).f32(20, -42.5f).bytes(),
        BigEndianBytes(12).text(0, "RELV").f32(8, -42).bytes(),
        BigEndianBytes(20).text(0, "RRAD").u16(16, 2500).bytes()};
    blocks.insert(blocks.end(), moments.begin(), moments.end());
    BigEndianBytes head(72);
    head.text(0, "KDMX").u32(4, 3600000).u16(8, kNexradDay).f32(12, azimuth);
    head.u8(21, status)
        .u8(22, elevation)
        .f32(24, 0.5f)
        .u16(30, static_cast<unsigned>(blocks.size()));
    test::ByteVector rest;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        head.u32(32 + 4 * i, static_cast<unsigned>(72 + rest.size()));
        rest = joined({rest, blocks[i]});
    }
    if (rest.size() % 2 != 0) {
        rest.push_back(0);
    }
    return joined({nexradHeader(72 + rest.size(), 31), head.bytes(), rest});
}

/* Messages of other types fill a frame of 2,432 bytes. */
inline test::ByteVector nexradFrame(unsigned type, const test::ByteVector& body) {
    test::ByteVector frame = joined({nexradHeader(2400, type), body});
    frame.resize(2432, 0);
    return frame;
}

/* The plan of a volume: two cuts. */
inline test::ByteVector nexradPlan() {
    return nexradFrame(5, BigEndianBytes(114).u16(6, 2).u16(22, 91).u16(68, 273).bytes());
}

/* A radial as before 2008. */
inline test::ByteVector nexradOldRadial(unsigned azimuthCode, unsigned elevation) {
    BigEndianBytes body(140);
    body.u32(0, 3600000).u16(4, kNexradDay).u16(8, azimuthCode).u16(14, 91).u16(16, elevation);
    body.u16(18, 1000).u16(20, 1000).u16(22, 1000).u16(24, 250).u16(26, 20).u16(28, 20);
    body.f32(32, -40).u16(36, 100).u16(38, 120).u16(42, 4).u16(60, 2600);
    for (std::size_t g = 100; g < 140; ++g) {
        body.u8(g, static_cast<unsigned>(3 * g % 256));
    }
    return nexradFrame(1, body.bytes());
}

inline test::ByteVector nexradVolumeHeader() {
    return BigEndianBytes(24).text(0, "AR2V0006.001").u32(12, kNexradDay).text(20, "KDMX").bytes();
}

}  // namespace clutter::fuzz

#endif
