/*
 * packing.h - the position of values in the bytes of a gate, and the meaning of their codes.
 */
// clang-format off
/*
The bytes of a gate, bit 7 on the left. The lowest 8 of 12 bits are in the first of their bytes.

  Z reflectivity   C clutter index   V velocity        Q signal quality   W spectrum width
  D differential reflectivity        P differential phase                 R correlation
  L linear depolarisation ratio      A absolute phase  S its deviation    . ignored

byte         0        1        2        3        4        5        6        7        8        9
2111     ZZZZZZZZ CCCCZZZZ   (on a little-endian machine: one word a gate)
2122     ZZZZZZZZ CCCCZZZZ VVVVVVVV QQQQVVVV
2141     ZZZZZZZZ CCCCZZZZ AAAAAAAA SSSSSSAA
2211/252 ZZZZZZZZ ....ZZZZ VVVVVVVV ....VVVV WWWWWWWW DDDDDDDD ........ PPPPPPPP RRRRRRRR
2211/260 ZZZZZZZZ ....ZZZZ VVVVVVVV ....VVVV WWWWWWWW DDDDDDDD ........ PPPPPPPP ....PPPP RRRRRRRR
2211/280 ZZZZZZZZ ....ZZZZ VVVVVVVV ....VVVV WWWWWWWW DDDDDDDD ........ RRRRRRRR PPPPPPPP ....PPPP
2212     ZZZZZZZZ ....ZZZZ VVVVVVVV ....VVVV WWWWWWWW LLLLLLLL AAAAAAAA ....AAAA
2213     ZZZZZZZZ CCCCZZZZ VVVVVVVV QQQQVVVV WWWWWWWW DDDDDDDD RRRRRRRR RRRRRRRR PPPPPPPP ....PPPP
2214     ZZZZZZZZ CCCCZZZZ VVVVVVVV QQQQVVVV WWWWWWWW LLLLLLLL AAAAAAAA ....AAAA
*/
// clang-format on
#ifndef CLUTTER_FORMATS_POLAR_PACKING_H
#define CLUTTER_FORMATS_POLAR_PACKING_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>

#include "base/constants.h"
#include "formats/polar/layout.h"

namespace clutter::formats {

/* code = (byte[low] + 256 byte[high]) >> shift & mask. For a code of one byte, low and high are the
 * same. */
struct CodeBits {
    unsigned char low;
    unsigned char high;
    unsigned char shift;
    unsigned short mask;
};

constexpr CodeBits wholeByte(unsigned char at) {
    return {at, at, 0, 0xFF};
}
/* The lowest bits of two bytes, and the highest bits of the second one. */
constexpr CodeBits lowerBits(unsigned char at, int bits) {
    return {at, static_cast<unsigned char>(at + 1), 0,
            static_cast<unsigned short>((1 << bits) - 1)};
}
constexpr CodeBits upperBits(unsigned char at, int bits) {
    return {at, static_cast<unsigned char>(at + 1), static_cast<unsigned char>(16 - bits),
            static_cast<unsigned short>((1 << bits) - 1)};
}

/* The word of product 2111 is in the byte order of the machine. */
constexpr bool kLittle = std::endian::native == std::endian::little;
constexpr CodeBits kWordLower = {kLittle ? 0 : 1, kLittle ? 1 : 0, 0, 0xFFF};
constexpr CodeBits kWordUpper = {kLittle ? 0 : 1, kLittle ? 1 : 0, 12, 0xF};

/* The value of a code, in double precision, in the order of operations below. nyquist in m/s. */
using Formula = double (*)(double code, double nyquist);

namespace polar_formula {

using base::kPi;

constexpr double kClutterIndex[16] = {0.0,  1.5, 2.0,  2.5, 2.75, 3.0, 3.25, 3.5,
                                      3.75, 4.0, 4.25, 4.5, 5.0,  5.5, 6.0,  7.0};

constexpr double reflectivity(double code, double) {
    return code * 0.1 - 32;
}
constexpr double clutterIndex(double code, double) {
    return kClutterIndex[static_cast<int>(code)];
}
/* The word is signed: the upper half of the table is never reached. */
constexpr double signedClutterIndex(double code, double) {
    return code < 8 ? kClutterIndex[static_cast<int>(code)] : 0.0;
}
constexpr double velocity(double code, double nyquist) {
    return code * nyquist / 2048 - nyquist;
}
constexpr double velocity252(double code, double nyquist) {
    return (code * kPi / 2048 - kPi) / kPi * nyquist;
}
constexpr double velocity260(double code, double nyquist) {
    return nyquist / kPi * (code * kPi / 2048 - kPi);
}
constexpr double width252(double code, double nyquist) {
    return (code * kPi / 256) / kPi * nyquist;
}
constexpr double width(double code, double nyquist) {
    return nyquist / kPi * code * kPi / 256;
}
/* Product 2213 gives its width as an angle and its quality as a count, kept for compatibility with
 * records of existing files. */
constexpr double widthAngle(double code, double) {
    return code * kPi / 256;
}
constexpr double quality(double code, double) {
    return code / 16;
}
constexpr double qualityCount(double code, double) {
    return code;
}
constexpr double differentialReflectivity(double code, double) {
    return code * 0.0625 - 8;
}
constexpr double depolarisation(double code, double) {
    return code * 0.2 - 40;
}
constexpr double phase252(double code, double) {
    return (code * kPi / 256 - kPi) * 180 / kPi;
}
constexpr double phase(double code, double) {
    return (code * kPi / 2048 - kPi) * base::kDegreesPerRadianFiveDecimals;
}
constexpr double absolutePhase(double code, double) {
    return code * kPi / 2048 - kPi;
}
constexpr double positivePhase(double code, double) {
    return code * 2 * kPi / 1024;
}
constexpr double phaseDeviation(double code, double) {
    return code * 0.625 - 40;
}
constexpr double correlation(double code, double) {
    return code * 0.005 - 0.2;
}
constexpr double fineCorrelation(double code, double) {
    return code * 0.00002 - 0.2;
}
constexpr double unused(double, double) {
    return -10;
}

}  // namespace polar_formula

struct FieldPacking {
    CodeBits bits;
    Formula value;
};

constexpr int kAnyLayout = 0;

struct Packing {
    short product;
    int layout;
    std::size_t gateBytes;
    bool wholeRays;  // rays are read in one piece, not gate by gate
    FieldPacking fields[kMaxPolarFields];
};

constexpr FieldPacking kReflectivity = {lowerBits(0, 12), polar_formula::reflectivity};
constexpr FieldPacking kClutterIndexOf = {upperBits(0, 4), polar_formula::clutterIndex};
constexpr FieldPacking kVelocity = {lowerBits(2, 12), polar_formula::velocity};
constexpr FieldPacking kQuality = {upperBits(2, 4), polar_formula::quality};
constexpr FieldPacking kWidth = {wholeByte(4), polar_formula::width};
constexpr FieldPacking kDifferential = {wholeByte(5), polar_formula::differentialReflectivity};
constexpr FieldPacking kDepolarisation = {wholeByte(5), polar_formula::depolarisation};
constexpr FieldPacking kAbsolutePhase = {lowerBits(6, 12), polar_formula::absolutePhase};
constexpr FieldPacking kUnused = {wholeByte(0), polar_formula::unused};

constexpr Packing depolarisedPacking(int layout) {
    return {2212,
            layout,
            8,
            false,
            {kReflectivity, kDepolarisation, kVelocity, kWidth, kAbsolutePhase}};
}

/* Fields in the order of the product's records. */
constexpr Packing kPackings[] = {
    {2111,
     kAnyLayout,
     2,
     true,
     {{kWordLower, polar_formula::reflectivity}, {kWordUpper, polar_formula::signedClutterIndex}}},
    {2122, kAnyLayout, 4, false, {kReflectivity, kClutterIndexOf, kVelocity, kQuality}},
    {2141,
     kAnyLayout,
     4,
     false,
     {kReflectivity,
      kClutterIndexOf,
      {lowerBits(2, 10), polar_formula::positivePhase},
      {upperBits(2, 6), polar_formula::phaseDeviation}}},
    {2211,
     252,
     9,
     false,
     {kReflectivity,
      kDifferential,
      {wholeByte(7), polar_formula::phase252},
      {wholeByte(8), polar_formula::correlation},
      {lowerBits(2, 12), polar_formula::velocity252},
      {wholeByte(4), polar_formula::width252},
      kUnused}},
    {2211,
     260,
     10,
     false,
     {kReflectivity,
      kDifferential,
      {lowerBits(7, 12), polar_formula::phase},
      {wholeByte(9), polar_formula::correlation},
      {lowerBits(2, 12), polar_formula::velocity260},
      kWidth,
      kUnused}},
    {2211,
     280,
     10,
     false,
     {kReflectivity,
      kDifferential,
      {lowerBits(8, 12), polar_formula::phase},
      {wholeByte(7), polar_formula::correlation},
      kVelocity,
      kWidth,
      kUnused}},
    depolarisedPacking(252),
    depolarisedPacking(260),
    depolarisedPacking(280),
    {2213,
     kAnyLayout,
     10,
     false,
     {kReflectivity,
      kDifferential,
      {lowerBits(8, 12), polar_formula::phase},
      {lowerBits(6, 16), polar_formula::fineCorrelation},
      kVelocity,
      {wholeByte(4), polar_formula::widthAngle},
      kClutterIndexOf,
      {upperBits(2, 4), polar_formula::qualityCount}}},
    {2214,
     kAnyLayout,
     8,
     false,
     {kReflectivity, kDepolarisation, kVelocity, kWidth, kAbsolutePhase, kClutterIndexOf,
      kQuality}},
};

/* Every packing describes as many values as its product has fields. */
constexpr bool packingsAreComplete() {
    return std::all_of(std::begin(kPackings), std::end(kPackings), [](const Packing& packing) {
        const auto values = std::count_if(std::begin(packing.fields), std::end(packing.fields),
                                          [](const FieldPacking& f) { return f.bits.mask != 0; });
        return values == fieldsOfProduct(packing.product);
    });
}
static_assert(packingsAreComplete());

/* Null when the product is not packed in this layout. */
inline const Packing* findPacking(int product, int layout) {
    for (const Packing& packing : kPackings) {
        if (packing.product != product) {
            continue;
        }
        if (packing.layout == kAnyLayout || packing.layout == layout) {
            return &packing;
        }
    }
    return nullptr;
}

/* The bytes of a gate of a product in its smallest layout. */
inline std::size_t smallestGateBytes(int product) {
    for (const Packing& packing : kPackings) {
        if (packing.product == product) {
            return packing.gateBytes;  // 252 comes first
        }
    }
    const SingleParameterProduct* single = findSingleParameter(product);
    return single != nullptr ? storedBytes(single->storage) : 0;
}

/* Bytes of a whole file of these counts (16 bits each: no overflow). In a layout that the product
 * does not have, gates count as in the smallest one. */
inline std::size_t bytesAskedFor(int product, int layout, int nrays, int ngates) {
    const Packing* packing = findPacking(product, layout);
    const std::size_t packed = packing != nullptr ? packing->gateBytes : smallestGateBytes(product);
    const std::size_t layer = findSingleParameter(product) != nullptr ? 1 : 0;
    const std::size_t rayBytes = static_cast<std::size_t>(ngates) * (packed + layer);
    return kPolarHeaderBytes + static_cast<std::size_t>(nrays) * (kRayHeaderBytes + rayBytes);
}

}  // namespace clutter::formats

#endif
