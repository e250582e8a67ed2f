/*
 * layout.h - header, products, names, units and display ranges of the polar data format, for reader
 * and writer. The packing of gates is in packing.h.
 *
 *     header (320 bytes) | ray { 5 words, gates } ... | a byte for each gate (single-parameter
 *                                                       products)
 *
 * Words have 16 bits, in the byte order of the machine.
 */
#ifndef CLUTTER_FORMATS_POLAR_LAYOUT_H
#define CLUTTER_FORMATS_POLAR_LAYOUT_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "base/constants.h"

namespace clutter::formats {

constexpr std::size_t kPolarHeaderBytes = 320;
constexpr std::size_t kPolarMagicBytes = 8;
constexpr std::size_t kRayHeaderBytes = 10;

// The two magics, with the order bytes that follow them.
constexpr char kMagicPlain[kPolarMagicBytes + 1] = "RADF\x80\x03\xC0\x01";
constexpr char kMagicExchanged[kPolarMagicBytes + 1] = "ARFD\x03\x80\x01\xC0";

/* Offsets of the header's words, in bytes. */
namespace polar_offset {
constexpr std::size_t kStartTime = 12;  // three times the same date and time; the second is read
constexpr std::size_t kTime = 24;       // year, month, day, hour, minute, second
constexpr std::size_t kEndTime = 36;
constexpr std::size_t kLongitude = 52;  // degrees, minutes, seconds
constexpr std::size_t kLatitude = 58;
constexpr std::size_t kHeights = 66;        // two values, 0.1 km
constexpr std::size_t kAltitude = 70;       // m
constexpr std::size_t kRadarConstant = 84;  // 0.1 dB
constexpr std::size_t kWavelength = 88;     // mm
constexpr std::size_t kBeamWidth = 92;      // 0.01 degree
constexpr std::size_t kRays = 112;
constexpr std::size_t kGates = 114;
constexpr std::size_t kGateLength = 116;   // m
constexpr std::size_t kPulseLength = 118;  // m
constexpr std::size_t kRotation = 120;     // 360 x rotations per minute
constexpr std::size_t kSamples = 122;      // pulses per ray
constexpr std::size_t kRepetition = 124;   // Hz
constexpr std::size_t kNyquist = 130;      // 0.01 m/s
constexpr std::size_t kProduct = 168;
constexpr std::size_t kRaysAgain = 258;  // both at least 1: they count, not those above
constexpr std::size_t kGatesAgain = 260;
constexpr std::size_t kFirstGate = 262;       // range, m
constexpr std::size_t kElevation = 274;       // 0.1 degree
constexpr std::size_t kElevationIndex = 276;  // product 2111 only
}  // namespace polar_offset

/* An end of a display scale: a fixed value or a multiple of the Nyquist velocity. */
struct DisplayEnd {
    float fixed;
    float nyquists = 0.0f;

    constexpr float at(float nyquist) const {
        return nyquists == 0.0f ? fixed : nyquists * nyquist;
    }
};

/* Name, units and display range of a record. */
struct PolarField {
    const char* name = " ";
    const char* units = " ";
    DisplayEnd lowest = {0.0f};
    DisplayEnd highest = {1.0f};
};

constexpr int kMaxPolarFields = 8;

/* Elevations of the scans of product 2111, degrees. */
constexpr short kIndexedElevationProduct = 2111;
constexpr double kIndexedElevations[] = {0.5, 1.0, 1.5, 2.5};

/* Each ray carries its elevation (0.1 degree); the last one counts for the scan. */
constexpr short kRayElevationProduct = 2122;

struct PolarProduct {
    short code;
    int nfields;
    bool correctsPhase;  // fields 2 and 3 are differential phase and correlation
    PolarField fields[kMaxPolarFields];
};

/* Spellings, blanks and ranges differ from product to product as in existing files. */
constexpr PolarProduct kPolarProducts[] = {
    {2111, 2, false, {{"Zv", "dBZ", {0}, {60}}, {" ", " ", {-1}, {1}}}},
    {2122,
     4,
     false,
     {{"Zv", "dBZ", {0}, {50}},
      {"CI", " ", {0}, {7}},
      {"V", "m/s", {-5}, {5}},
      {"SQI", " ", {0}, {1}}}},
    {2141,
     4,
     false,
     {{"Zv", "dBZ", {0}, {50}},
      {"CI", " ", {0}, {7}},
      {"Abs Phase_V", "rad", {0}, {6}},
      {"std(abs_Phase)", "dB", {-40}, {0}}}},
    {2211,
     7,
     true,
     {{"Zh", "dBZ", {0}, {60}},
      {"Zdr", "dB ", {-8}, {5}},
      {"Phidp", "deg", {-30}, {180}},
      {"RhoHV", "   ", {0.5f}, {1}},
      {"V", "m/s", {-5}, {5}},
      {"W", "m/s", {0}, {2.5f}},
      {"   ", "   ", {0}, {1}}}},
    {2212,
     5,
     false,
     {{"Zh", "dBZ", {0}, {60}},
      {"LDR", "dB ", {-40}, {0}},
      {"V", "m/s", {0, -1}, {0, 1}},
      {"W", "m/s", {0}, {0, 0.5f}},
      {"Abs_phase_V", "rad", {-base::kFloatPiShown}, {base::kFloatPiShown}}}},
    {2213,
     8,
     true,
     {{"Zh", "dBZ", {0}, {60}},
      {"Zdr", "dB ", {-8}, {5}},
      {"Phidp", "deg", {-30}, {180}},
      {"RhoHV", "   ", {0.5f}, {1}},
      {"V", "m/s", {-5}, {5}},
      {"W", "m/s", {0}, {2.5f}},
      {"CI", "dB", {0}, {7}},
      {"SQI", "-", {0}, {15}}}},
    {2214,
     7,
     false,
     {{"Zh", "dBZ", {0}, {60}},
      {"LDR", "dB ", {-40}, {0}},
      {"V", "m/s", {0, -1}, {0, 1}},
      {"W", "m/s", {0}, {0, 0.5f}},
      {"Abs Phase_V", "rad", {-base::kFloatPiShown}, {base::kFloatPiShown}},
      {"CI", "- ", {0}, {7}},
      {"SQI", "-", {0}, {1}}}},
};

/* How a single-parameter product stores a value. */
enum class Storage { kFloat32, kUint8, kUint16, kInt16, kInt32, kUint32 };

constexpr std::size_t storedBytes(Storage storage) {
    if (storage == Storage::kUint8) {
        return 1;
    }
    return storage == Storage::kUint16 || storage == Storage::kInt16 ? 2 : 4;
}

struct SingleParameterProduct {
    short code;
    Storage storage;
};

constexpr SingleParameterProduct kSingleParameterProducts[] = {
    {1113, Storage::kFloat32}, {1114, Storage::kFloat32}, {1115, Storage::kUint8},
    {1116, Storage::kFloat32}, {1117, Storage::kInt32},   {1118, Storage::kInt32},
    {1119, Storage::kInt32},   {1120, Storage::kUint8},   {1122, Storage::kInt32},
    {1124, Storage::kFloat32}, {1125, Storage::kFloat32}, {1126, Storage::kUint32},
    {1127, Storage::kUint8},   {1128, Storage::kUint8},   {1400, Storage::kInt16},
    {1500, Storage::kInt16},   {1511, Storage::kFloat32}, {1512, Storage::kFloat32},
    {1513, Storage::kFloat32}, {1514, Storage::kFloat32}, {1515, Storage::kFloat32},
    {1519, Storage::kFloat32}, {1521, Storage::kUint16},  {1610, Storage::kFloat32},
    {1611, Storage::kFloat32}, {1711, Storage::kUint32},  {1712, Storage::kUint32},
    {1811, Storage::kFloat32}, {1812, Storage::kFloat32}, {1813, Storage::kFloat32},
    {1814, Storage::kFloat32}, {1815, Storage::kFloat32}, {3333, Storage::kInt16},
};
constexpr int kSingleParameterFields = 2;

/* Null for a code of another kind. */
constexpr const SingleParameterProduct* findSingleParameter(int code) {
    const auto found =
        std::find_if(std::begin(kSingleParameterProducts), std::end(kSingleParameterProducts),
                     [&](const SingleParameterProduct& p) { return p.code == code; });
    return found == std::end(kSingleParameterProducts) ? nullptr : found;
}

constexpr const PolarProduct* findProduct(int code) {
    const auto found = std::find_if(std::begin(kPolarProducts), std::end(kPolarProducts),
                                    [&](const PolarProduct& p) { return p.code == code; });
    return found == std::end(kPolarProducts) ? nullptr : found;
}

/* Number of fields of a product; 0 when it is unknown. */
constexpr int fieldsOfProduct(int code) {
    const PolarProduct* product = findProduct(code);
    if (product != nullptr) {
        return product->nfields;
    }
    return findSingleParameter(code) != nullptr ? kSingleParameterFields : 0;
}

/* Name, units and display range of a field; blanks and 0 to 1 when unknown. */
inline PolarField describeField(int code, int field) {
    const PolarProduct* product = findProduct(code);
    return product != nullptr && field < product->nfields ? product->fields[field] : PolarField{};
}

}  // namespace clutter::formats

#endif
