/*
 * layout.h - the parts of a German DX file.
 */
#ifndef CLUTTER_FORMATS_DX_LAYOUT_H
#define CLUTTER_FORMATS_DX_LAYOUT_H

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "clutterclassifier/CGermanRadar.h"

namespace clutter::formats {

/* "DX", day, hour, minute (two digits each), station, month, year of the century. */
constexpr std::string_view kDxStart = "DX";
constexpr std::size_t kDxStationBytes = 5;
constexpr int kDxCentury = 2000;

/* Then tokens, each followed by this many ignored characters. */
struct DxToken {
    std::string_view name;
    std::size_t bytes;
};
constexpr DxToken kDxTokens[] = {{"BY", 5}, {"VS", 2}, {"CO", 1}, {"CD", 1}, {"CS", 1}, {"EP", 24}};

/* Then a message with its length before it, then filler up to the first ray. */
constexpr std::string_view kDxMessage = "MS";
constexpr std::size_t kDxMessageDigits = 3;
constexpr unsigned char kDxFiller = 3;

/* A ray: marker, azimuth and elevation (0.1 degree, little-endian words), pairs of bytes. */
constexpr unsigned char kDxMarker[2] = {0x00, 0x20};
constexpr unsigned char kDxRun = 16;  // second byte: the first one is a count of empty bins
constexpr double kDxEmptyDbz = -32.5;
constexpr double kDxStepDbz = 0.5;

constexpr int kDxRays = 360;
constexpr int kDxSlots = 128;  // of a ray in memory
static_assert(std::extent_v<decltype(CGermanRadar::azimuth)> == kDxRays);
static_assert(std::extent_v<decltype(CGermanRadar::reflectivity)> == kDxRays * kDxSlots);

constexpr bool isDxBinCount(int bins) {
    return bins == 100 || bins == 128;
}

}  // namespace clutter::formats

#endif
