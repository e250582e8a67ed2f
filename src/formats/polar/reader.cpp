/*
 * Polar data files into field records (docs/formats/polar-data.md).
 *
 * Values are codes of a few bits: all codes are decoded once into a table, and a gate is a look-up.
 * Files may end anywhere: missing bytes repeat the ones before (rays.h).
 */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/constants.h"
#include "base/files/byte_cursor.h"
#include "base/files/file.h"
#include "base/kernel.h"
#include "base/text.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "clutterclassifier/Cradarpro.h"
#include "dsp/range_loss.h"
#include "formats/polar/header.h"
#include "formats/polar/layout.h"
#include "formats/polar/packing.h"
#include "formats/polar/rays.h"
#include "model/display.h"

using namespace clutter;
using namespace clutter::formats;

namespace {

constexpr int kFullCircle = 36000;       // 0.01 degree
constexpr float kSaturatedDbz = 377.5f;  // all bits set: no echo, not the strongest one
constexpr float kNoEchoDbz = -32.0f;
constexpr float kBlanked = -999.0f;
constexpr int kBlankedFields = 6;
constexpr int kPhaseField = 2;
constexpr int kCorrelationField = 3;
constexpr int kPhaseWindow = 10;  // gates

/* --- angles --- */

/* Azimuths are written as 0 to 360 degrees or as negative ones. */
float azimuthOf(std::uint16_t word) {
    const int hundredths = word <= kFullCircle ? word : static_cast<std::int16_t>(word);
    const double azimuth = hundredths * 0.01 * base::kPi / 180;
    return static_cast<float>(azimuth >= base::kTwoPi ? azimuth - base::kTwoPi : azimuth);
}

float rayElevationOf(std::uint16_t word) {
    return static_cast<float>(static_cast<std::int16_t>(word) * 0.1 * base::kPi / 180);
}

void storeAngles(const RayBytes& header, const PolarHeader& scan, int ray, float* angles) {
    angles[1 + ray] = azimuthOf(header.word(1));
    if (scan.product == kRayElevationProduct) {
        angles[0] = rayElevationOf(header.word(2));
    }
}

/* --- values --- */

/* The values of all codes of a field. */
std::vector<float> decodeCodes(const FieldPacking& field, float nyquist) {
    std::vector<float> values(field.bits.mask + std::size_t{1});
    for (std::size_t code = 0; code < values.size(); ++code) {
        values[code] = static_cast<float>(field.value(static_cast<double>(code), nyquist));
    }
    return values;
}

/* No kernel: vector gathers are slower than plain loads. */
void unpackRow(const unsigned char* gates, std::size_t gateBytes, CodeBits bits,
               const float* values, float* out, std::size_t n) {
    for (std::size_t g = 0; g < n; ++g) {
        const unsigned pair = gates[bits.low] | static_cast<unsigned>(gates[bits.high]) << 8;
        out[g] = values[pair >> bits.shift & bits.mask];
        gates += gateBytes;
    }
}

template <class Stored>
void widenRow(const unsigned char* stored, float* out, std::size_t n) {
    for (std::size_t g = 0; g < n; ++g) {
        Stored value;
        std::memcpy(&value, stored + g * sizeof value, sizeof value);
        out[g] = static_cast<float>(value);
    }
}

using RowDecoder = void (*)(const unsigned char* stored, float* out, std::size_t n);

RowDecoder decoderOf(Storage storage) {
    switch (storage) {
        case Storage::kUint8:
            return widenRow<std::uint8_t>;
        case Storage::kUint16:
            return widenRow<std::uint16_t>;
        case Storage::kInt16:
            return widenRow<std::int16_t>;
        case Storage::kInt32:
            return widenRow<std::int32_t>;
        case Storage::kUint32:
            return widenRow<std::uint32_t>;
        case Storage::kFloat32:
            break;
    }
    return widenRow<float>;
}

CLUTTER_KERNEL void clearSaturated(float* values, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        values[i] = values[i] == kSaturatedDbz ? kNoEchoDbz : values[i];
    }
}

/* --- scans --- */

/* Data and angles of a scan, zeros at first. Records receive them when all are complete. */
struct ScanArrays {
    std::unique_ptr<float[]> angles;
    std::vector<std::unique_ptr<float[]>> fields;

    explicit ScanArrays(const PolarHeader& header)
        : angles(new float[static_cast<std::size_t>(header.nrays) + 1]()) {
        angles[0] = header.elevation;
        for (int f = fieldsOfProduct(header.product); f > 0; --f) {
            fields.emplace_back(new float[header.cells()]());
        }
    }
};

void readPacked(StaleReader& file, const PolarHeader& header, const Packing& packing,
                ScanArrays& scan) {
    const auto ngates = static_cast<std::size_t>(header.ngates);
    std::vector<std::vector<float>> values;
    for (std::size_t f = 0; f < scan.fields.size(); ++f) {
        values.push_back(decodeCodes(packing.fields[f], header.nyquist));
    }
    const std::size_t rayBytes = ngates * packing.gateBytes;
    RayBytes rayHeader(kRayHeaderBytes, kRayHeaderBytes);
    RayBytes gates(rayBytes, packing.wholeRays ? rayBytes : packing.gateBytes);
    for (int r = 0; r < header.nrays; ++r) {
        rayHeader.read(file);
        storeAngles(rayHeader, header, r, scan.angles.get());
        gates.read(file);
        const std::size_t row = static_cast<std::size_t>(r) * ngates;
        for (std::size_t f = 0; f < scan.fields.size(); ++f) {
            unpackRow(gates.data(), packing.gateBytes, packing.fields[f].bits, values[f].data(),
                      scan.fields[f].get() + row, ngates);
        }
    }
}

/* In a layout that the product does not have, rays consist of their headers only. */
void readAnglesOnly(StaleReader& file, const PolarHeader& header, ScanArrays& scan) {
    RayBytes rayHeader(kRayHeaderBytes, kRayHeaderBytes);
    for (int r = 0; r < header.nrays; ++r) {
        rayHeader.read(file);
        storeAngles(rayHeader, header, r, scan.angles.get());
    }
}

void readSingle(StaleReader& file, const PolarHeader& header, Storage storage, ScanArrays& scan) {
    const auto ngates = static_cast<std::size_t>(header.ngates);
    const std::size_t gateBytes = storedBytes(storage);
    const std::size_t rayBytes = ngates * gateBytes;
    const RowDecoder decode = decoderOf(storage);
    RayBytes rayHeader(kRayHeaderBytes, kRayHeaderBytes);
    RayBytes gates(rayBytes, storage == Storage::kFloat32 ? rayBytes : gateBytes);
    for (int r = 0; r < header.nrays; ++r) {
        rayHeader.read(file);
        storeAngles(rayHeader, header, r, scan.angles.get());
        gates.read(file);
        decode(gates.data(), scan.fields[0].get() + static_cast<std::size_t>(r) * ngates, ngates);
    }
    const base::Bytes layer = file.rest();
    widenRow<std::uint8_t>(layer.data(), scan.fields[1].get(),
                           std::min(layer.size(), header.cells()));
}

void readRays(base::Bytes bytes, const PolarHeader& header, int layout, ScanArrays& scan) {
    StaleReader file(base::bytesFrom(bytes, kPolarHeaderBytes));
    const Packing* packing = findPacking(header.product, layout);
    if (const SingleParameterProduct* single = findSingleParameter(header.product)) {
        readSingle(file, header, single->storage, scan);
    } else if (packing != nullptr) {
        readPacked(file, header, *packing, scan);
    } else {
        readAnglesOnly(file, header, scan);
    }
    clearSaturated(scan.fields[0].get(), header.cells());
}

/* --- correction of full polarimetric scans --- */

CLUTTER_KERNEL void blankWeak(const float* __restrict snr, float threshold,
                              float* __restrict values, int n) {
    for (int g = 0; g < n; ++g) {
        values[g] = threshold > snr[g] ? kBlanked : values[g];
    }
}

void correctPhase(Cpluvek* fields) {
    Cradarpro radar;
    float* phase = fields[kPhaseField].data;
    const int ngates = fields[0].ngates, nrays = fields[0].nrays;
    const float offset =
        radar.GetInitialPDP(phase, fields[kCorrelationField].data, ngates, nrays, kPhaseWindow);
    radar.CorrectPDPOffset(phase, ngates, nrays, offset);
}

void blankWeakEchoes(Cpluvek* fields, float threshold) {
    const int ngates = fields[0].ngates;
    const std::vector<float> losses = dsp::rangeLossesDb(ngates, fields[0].gatesize);
    std::vector<float> snr(losses.size());
    for (int r = 0; r < fields[0].nrays; ++r) {
        const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(r) * ngates;
        dsp::signalToNoise(fields[0].data + row, losses.data(), fields[0].radarconst, snr.data(),
                           ngates);
        for (int f = 0; f < kBlankedFields; ++f) {
            blankWeak(snr.data(), threshold, fields[f].data + row, ngates);
        }
    }
}

/* --- records --- */

void storeDisplay(Cpluvek& record) {
    model::showWholeScan(record, 4.0f, "Range [km]", "Range [km]");
    record.recindex = 0;
    record.valid = 1;
}

}  // namespace

int CThuPolDaFor::ReadPolarData(char* path, Cpluvek* fields, int layout, int skipcorrection) {
    const auto bytes = base::readWholeFile(path);
    if (!bytes || fields == nullptr) {
        return kPolarNotOpened;
    }
    PolarHeader header;
    const int result = readPolarHeader(*bytes, header);
    if (result != kPolarRead) {
        return result;
    }
    ScanArrays scan(header);
    readRays(*bytes, header, layout, scan);
    base::adopt(fields[0].angles, std::move(scan.angles));
    for (std::size_t f = 0; f < scan.fields.size(); ++f) {
        base::adopt(fields[f].data, std::move(scan.fields[f]));
    }
    storePolarHeader(header, fields[0]);
    const PolarProduct* product = findProduct(header.product);
    if (skipcorrection == 0 && product != nullptr && product->correctsPhase) {
        correctPhase(fields);
        blankWeakEchoes(fields, signalthreshold);
    }
    storeDisplay(fields[0]);
    FillingFields(fields);
    return kPolarRead;
}
