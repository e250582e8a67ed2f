/*
 * Polar data files from field records, and shortened copies of files (docs/formats/polar-data.md).
 */
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/constants.h"
#include "base/files/file.h"
#include "base/number.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cufrw.h"
#include "formats/polar/header.h"
#include "formats/polar/layout.h"
#include "formats/polar/packing.h"
#include "formats/polar/rays.h"

using namespace clutter;
using namespace clutter::formats;

namespace {

using Output = std::vector<unsigned char>;

template <class Value>
void append(Output& out, Value value) {
    const std::size_t at = out.size();
    out.resize(at + sizeof value);
    std::memcpy(out.data() + at, &value, sizeof value);
}

bool save(const Output& bytes, const char* path) {
    base::File stream = base::openFile(path, "wb");
    if (!stream) {
        return false;
    }
    std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
    return base::closeChecked(std::move(stream));
}

/* --- shortened copies --- */

constexpr double kMinElevationDeg = 1.5;
constexpr double kTopHeightM = 10000.0;
constexpr double kRangeStepM = 5000.0;

/* Range at which a beam reaches the top height over a sphere, rounded up to whole steps:
 * r^2 + 2 R sin(e) r + R^2 - (R + H)^2 = 0. */
double rangeToTop(double elevation) {
    const double b = 2 * base::kEarthRadiusM * std::sin(elevation);
    const double c = base::kEarthRadiusM * base::kEarthRadiusM -
                     (base::kEarthRadiusM + kTopHeightM) * (base::kEarthRadiusM + kTopHeightM);
    const double range = (-b + std::sqrt(b * b - 4 * c)) / 2;
    return std::ceil(range / kRangeStepM) * kRangeStepM;
}

/* Depends only on the number of fields, so that product 2214 is treated as 2211. */
std::size_t repackedGateBytes(int nfields, int layout) {
    if (nfields == 5) {
        return 8;
    }
    if (nfields != 7) {
        return 0;
    }
    if (layout == 252) {
        return 9;
    }
    return layout == 260 || layout == 280 ? 10 : 0;
}

/* The number of gates to keep; not below the present number when the file must stay as it is. */
int shortenedGates(const PolarHeader& header) {
    const double elevation = static_cast<double>(header.elevation) + base::kHalfDegreeRad;
    const bool low = !(elevation * 180 / base::kPi > kMinElevationDeg);
    if (low || header.firstgate != 0 || header.gatesize == 0.0f) {
        return header.ngates;
    }
    return base::truncateToInt(rangeToTop(elevation) / static_cast<double>(header.gatesize));
}

void copyShortened(base::Bytes file, const PolarHeader& header, int ngates, std::size_t gateBytes,
                   Output& out) {
    std::array<unsigned char, kPolarHeaderBytes> head = {};
    StaleReader rest(file);
    rest.read(head.data(), head.size());
    const auto count = static_cast<std::int16_t>(ngates);
    std::memcpy(head.data() + polar_offset::kGates, &count, sizeof count);
    std::memcpy(head.data() + polar_offset::kGatesAgain, &count, sizeof count);
    out.assign(head.begin(), head.end());
    const std::size_t oldBytes = static_cast<std::size_t>(header.ngates) * gateBytes;
    const auto kept = static_cast<std::ptrdiff_t>(static_cast<std::size_t>(ngates) * gateBytes);
    RayBytes rayHeader(kRayHeaderBytes, kRayHeaderBytes);
    RayBytes gates(oldBytes, oldBytes);
    for (int r = 0; r < header.nrays; ++r) {
        rayHeader.read(rest);
        gates.read(rest);
        out.insert(out.end(), rayHeader.data(), rayHeader.data() + kRayHeaderBytes);
        out.insert(out.end(), gates.data(), gates.data() + kept);
    }
}

/* --- single-parameter products --- */

/* The 320 bytes of a header; unset bytes are 0. */
class HeaderWriter {
  public:
    void text(const char (&bytes)[kPolarMagicBytes]) {
        std::memcpy(bytes_.data(), bytes, sizeof bytes);
    }
    void words(std::size_t offset, std::initializer_list<int> values) {
        for (const int value : values) {
            const auto word = static_cast<std::uint16_t>(value);
            std::memcpy(bytes_.data() + offset, &word, sizeof word);
            offset += sizeof word;
        }
    }
    void value(std::size_t offset, float value) {
        words(offset, {base::truncateAndWrap<std::uint16_t>(value)});
    }
    const std::array<unsigned char, kPolarHeaderBytes>& bytes() const { return bytes_; }

  private:
    std::array<unsigned char, kPolarHeaderBytes> bytes_ = {};
};

/* An angle in steps of 1 / steps degree, rounded down with a tolerance for the rounding of the
 * angle itself. */
double degreeSteps(float angle, int steps) {
    return std::floor(static_cast<double>(angle) * 180 / base::kPi * steps + 0.1);
}

/* Words that are the same in every file. */
void putConstants(HeaderWriter& header) {
    header.words(8, {1, 1});
    header.words(48, {3, 771});
    header.words(64, {20, 5816, 1582});
    header.words(72, {3, 3, 1, 0, 1, 3});
    header.words(108, {1, 1});
    header.words(144, {35});
    header.words(152, {20});
    header.words(156, {1, 200, 160});
    header.words(172, {4, 1});
}

void putTimeAndSite(const Cpluvek& source, HeaderWriter& header) {
    for (const std::size_t offset :
         {polar_offset::kStartTime, polar_offset::kTime, polar_offset::kEndTime}) {
        header.words(offset, {source.year, source.month, source.day, source.hour, source.minute,
                              source.second});
    }
    short degrees = 0, minutes = 0, seconds = 0;
    deg2degminsec(source.longitude, degrees, minutes, seconds);
    header.words(polar_offset::kLongitude, {degrees, minutes, seconds});
    deg2degminsec(source.latitude, degrees, minutes, seconds);
    header.words(polar_offset::kLatitude, {degrees, minutes, seconds});
    header.value(polar_offset::kAltitude, source.altitude);
}

void putRadarAndGrid(const Cpluvek& source, HeaderWriter& header) {
    header.value(polar_offset::kRadarConstant, source.radarconst * 10.0f);
    header.value(polar_offset::kWavelength, source.wavelength * 1000.0f);
    header.value(polar_offset::kBeamWidth, source.beamwidth * 180.0f / base::kFloatPi * 100.0f);
    header.words(polar_offset::kRays, {source.nrays, source.ngates});
    header.value(polar_offset::kGateLength, source.gatesize);
    header.value(polar_offset::kPulseLength, source.pulsedepth);
    header.value(polar_offset::kRotation, source.rpm * 360.0f);
    header.value(polar_offset::kSamples, source.nsamples);
    header.value(polar_offset::kRepetition, source.prf);
    header.value(polar_offset::kNyquist, source.nyquist * 100.0f);
    header.words(polar_offset::kProduct, {source.radarid});
    header.words(polar_offset::kRaysAgain, {source.nrays, source.ngates});
    header.value(polar_offset::kFirstGate, static_cast<float>(source.firstgate) * source.gatesize);
    const float elevation = source.angles != nullptr ? source.angles[0] : 0.0f;
    // Readers take the elevation of the scan from here.
    header.words(polar_offset::kElevation,
                 {base::truncateAndWrap<std::uint16_t>(degreeSteps(elevation, 10))});
}

void appendRayHeader(const Cpluvek& source, int ray, Output& out) {
    const bool known = source.angles != nullptr;
    const double azimuth = known ? degreeSteps(source.angles[1 + ray], 100) : 0.0;
    const double elevation = known ? degreeSteps(source.angles[0], 100) : 0.0;
    append(out, std::uint16_t{0});
    append(out, base::truncateAndWrap<std::uint16_t>(azimuth));
    append(out, base::truncateAndWrap<std::uint16_t>(elevation));
    append(out, static_cast<std::uint16_t>(4u * static_cast<unsigned>(source.ngates)));
    append(out, base::truncateAndWrap<std::uint16_t>(source.nsamples));
}

template <class Stored>
void appendNarrowed(const float* values, std::size_t n, Output& out) {
    for (std::size_t g = 0; g < n; ++g) {
        append(out, base::truncateAndWrap<Stored>(values[g]));
    }
}

void appendFloats(const float* values, std::size_t n, Output& out) {
    const std::size_t at = out.size();
    out.resize(at + n * sizeof *values);
    if (n > 0) {
        std::memcpy(out.data() + at, values, n * sizeof *values);
    }
}

using RowEncoder = void (*)(const float* values, std::size_t n, Output& out);

RowEncoder encoderOf(Storage storage) {
    switch (storage) {
        case Storage::kUint8:
            return appendNarrowed<std::uint8_t>;
        case Storage::kUint16:
            return appendNarrowed<std::uint16_t>;
        case Storage::kInt16:
            return appendNarrowed<std::int16_t>;
        case Storage::kInt32:
            return appendNarrowed<std::int32_t>;
        case Storage::kUint32:
            return appendNarrowed<std::uint32_t>;
        case Storage::kFloat32:
            break;
    }
    return appendFloats;
}

void appendRays(const Cpluvek& source, Storage storage, Output& out) {
    const RowEncoder encode = encoderOf(storage);
    const auto ngates = static_cast<std::size_t>(std::max(source.ngates, 0));
    const std::vector<float> nothing(source.data == nullptr ? ngates : 0, 0.0f);
    for (int r = 0; r < source.nrays; ++r) {
        appendRayHeader(source, r, out);
        const float* row = source.data != nullptr
                               ? source.data + static_cast<std::size_t>(r) * ngates
                               : nothing.data();
        encode(row, ngates, out);
    }
}

/* One byte for each gate of the scan, 0 where the layer has no value. */
void appendLayer(const Cpluvek* layer, std::size_t cells, Output& out) {
    const std::size_t start = out.size();
    if (layer != nullptr && layer->data != nullptr) {
        const std::size_t held = base::cellCount(layer->ngates, layer->nrays);
        appendNarrowed<std::uint8_t>(layer->data, std::min(held, cells), out);
    }
    out.resize(start + cells, 0);
}

}  // namespace

int CThuPolDaFor::PackAgainDataFiles(char* inpath, char* outpath, int layout) {
    const auto file = base::readWholeFile(inpath);
    PolarHeader header;
    if (!file || readPolarHeader(*file, header) != kPolarRead) {
        return 0;
    }
    const std::size_t gateBytes = repackedGateBytes(fieldsOfProduct(header.product), layout);
    const int ngates = shortenedGates(header);
    if (gateBytes == 0 || ngates >= header.ngates) {
        return 0;
    }
    Output out;
    copyShortened(*file, header, ngates, gateBytes, out);
    return save(out, outpath) ? 1 : 0;
}

int CThuPolDaFor::WriteSingleParameterData(const char* path, const Cpluvek* values,
                                           const Cpluvek* layer) {
    const SingleParameterProduct* product =
        values != nullptr ? findSingleParameter(values->radarid) : nullptr;
    if (product == nullptr) {
        return 0;
    }
    HeaderWriter header;
    header.text(magic);
    putConstants(header);
    putTimeAndSite(*values, header);
    putRadarAndGrid(*values, header);
    Output out(header.bytes().begin(), header.bytes().end());
    appendRays(*values, product->storage, out);
    appendLayer(layer, base::cellCount(values->ngates, values->nrays), out);
    return save(out, path) ? 1 : 0;
}

void CThuPolDaFor::LatLonToDegMinSec(float angle, short& deg, short& min, short& sec) {
    deg2degminsec(angle, deg, min, sec);
}
