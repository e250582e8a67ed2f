/* palette.cpp - the colour tables, 33 colours each, evenly spaced. */
#include "picture/palette.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace cli {

namespace {

using Table = std::array<std::uint32_t, 33>;  // 0xrrggbb

constexpr Table kReflectivityTable{
    0xf0f4f9, 0xeaf1fa, 0xe5effa, 0xdfecfb, 0xd9eafc, 0xcfe6fd, 0xc4e3ff, 0xbae0fe, 0xaeddff,
    0x9cd8ff, 0x89d4ff, 0x6fd1fd, 0x46d5e4, 0x29dabc, 0x41d997, 0x4fd77c, 0x64d35a, 0x91c925,
    0xb2bd00, 0xc8b108, 0xd7a404, 0xdb9400, 0xdf8200, 0xdf6d00, 0xdf5300, 0xdc3116, 0xcd142f,
    0xb9003f, 0x9f0051, 0x85005d, 0x6a0062, 0x4f0060, 0x350058};

constexpr Table kDivergingTable{
    0x003b7a, 0x00468c, 0x0050a0, 0x005bb3, 0x0a66c3, 0x1f72d0, 0x307edb, 0x408ae5, 0x5097ee,
    0x61a3f6, 0x73affc, 0x87bbfe, 0x9cc7ff, 0xb1d3fe, 0xc5defe, 0xd8e9ff, 0xf2f2f2, 0xfde0d6,
    0xfed0bf, 0xffbfa8, 0xfcae93, 0xf79f80, 0xf18f6d, 0xe9805b, 0xe07149, 0xd56339, 0xca5527,
    0xbe4714, 0xb13b00, 0x9f3400, 0x8d2d00, 0x7c2700, 0x6c2000};

constexpr Table kSequentialTable{
    0xf8f7e0, 0xf3f3d4, 0xedefc8, 0xe8ecbc, 0xe1e9b1, 0xdae6a5, 0xd2e39a, 0xc7df93, 0xb8dc8f,
    0xa9d88d, 0x99d48b, 0x88d18b, 0x75cd8b, 0x61c88d, 0x4dc292, 0x3abb97, 0x25b39b, 0x09ab9d,
    0x0aa39f, 0x009b9f, 0x09919e, 0x02889d, 0x067e9b, 0x01759a, 0x026b9a, 0x03619a, 0x155696,
    0x1b4c90, 0x20428a, 0x243783, 0x272c7c, 0x292174, 0x2a146c};

constexpr const Table& tableOf(Palette palette) {
    switch (palette) {
        case Palette::kReflectivity:
            return kReflectivityTable;
        case Palette::kDiverging:
            return kDivergingTable;
        default:
            return kSequentialTable;
    }
}

std::uint8_t between(std::uint32_t below, std::uint32_t above, int shift, double weight) {
    const double a = (below >> shift) & 0xff, b = (above >> shift) & 0xff;
    return static_cast<std::uint8_t>(std::lround(a + weight * (b - a)));
}

}  // namespace

Rgb colourAt(Palette palette, double position) {
    const Table& table = tableOf(palette);
    constexpr int kLast = 32;
    if (!(position > 0.0)) {
        position = 0.0;  // NaN too: never past the table
    }
    if (position > 1.0) {
        position = 1.0;
    }
    const int below = position >= 1.0 ? kLast - 1 : static_cast<int>(position * kLast);
    const double weight = position * kLast - below;
    const std::uint32_t a = table[below], b = table[below + 1];
    return {between(a, b, 16, weight), between(a, b, 8, weight), between(a, b, 0, weight)};
}

Rgb reasonColour(float reason) {
    constexpr Rgb kReasons[] = {{0x00, 0x72, 0xb2}, {0x56, 0xb4, 0xe9}, {0x00, 0x9e, 0x73},
                                {0xa6, 0xd8, 0x54}, {0xd5, 0x5e, 0x00}, {0xe6, 0x9f, 0x00},
                                {0x8d, 0x6e, 0x63}, {0xcc, 0x79, 0xa7}, {0x5e, 0x3c, 0x99},
                                {0x60, 0x60, 0x60}};
    for (std::size_t i = 0; i < std::size(kReasons); ++i) {
        if (reason == static_cast<float>(i)) {
            return kReasons[i];
        }
    }
    return kNoDataColour;
}

Rgb classColour(float code) {
    if (code == 0.0f) {
        return {0x00, 0x72, 0xb2};  // precipitation: blue
    }
    if (code == 5.0f) {
        return {0xd5, 0x5e, 0x00};  // ground clutter: vermilion
    }
    if (code == 6.0f) {
        return {0x00, 0x9e, 0x73};  // sea clutter: bluish green
    }
    if (code == 7.0f) {
        return {0xcc, 0x79, 0xa7};  // turbine clutter: reddish purple
    }
    if (code == 3.0f) {
        return {0xfb, 0xf6, 0xe6};  // noise: ivory, to stay in the background
    }
    return kNoDataColour;
}

}  // namespace cli
