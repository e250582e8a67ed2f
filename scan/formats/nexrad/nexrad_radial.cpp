/*
 * Messages of radials. Type 31 begins with a header that points to blocks: three constant ones
 * (volume, elevation, radial) and one a moment. Type 1 has up to three moments at fixed scales.
 */
#include "scan/formats/nexrad/nexrad_radial.h"

#include <algorithm>
#include <cmath>

namespace scan::nexrad {
namespace {

constexpr double kSecondsPerDay = 86400;
constexpr double kCodedDegrees = 180.0 / 32768;  // of a 16-bit angle
constexpr std::size_t kMaxBlocks = 16;
constexpr std::size_t kPointersAt = 32;
constexpr std::size_t kMomentHeaderBytes = 28;

/* Day 1 is 1970-01-01. */
double timeOf(unsigned day, unsigned milliseconds) {
    return (static_cast<double>(day) - 1) * kSecondsPerDay + milliseconds / 1000.0;
}

void parseVolume(BigEndian block, Radial& radial) {
    const double latitude = block.f32(8);
    const double longitude = block.f32(12);
    const double altitude = block.i16(16) + block.u16(18);
    const double calibration = block.f32(20);
    if (block.failed()) {
        return;
    }
    radial.latitudeDeg = latitude;
    radial.longitudeDeg = longitude;
    radial.altitudeM = altitude;
    radial.calibrationDb = calibration;
}

void parseElevation(BigEndian block, Radial& radial) {
    const double calibration = block.f32(8);
    if (!block.failed() && std::isfinite(calibration) && calibration != 0) {
        radial.calibrationDb = calibration;
    }
}

void parseMoment(BigEndian block, Radial& radial) {
    Moment moment;
    moment.name = block.text(1, 3);
    moment.gates = block.u16(8);
    moment.firstM = block.i16(10);
    moment.spacingM = block.u16(12);
    moment.wordBytes = block.u8(19) == 16 ? 2 : 1;
    moment.scale = block.f32(20);
    moment.offset = block.f32(24);
    const auto bytes = static_cast<std::size_t>(moment.gates * moment.wordBytes);
    const bool usable = moment.spacingM > 0 && std::isfinite(moment.scale) && moment.scale != 0 &&
                        std::isfinite(moment.offset) && moment.gates > 0;
    if (block.failed() || !usable || !block.holds(kMomentHeaderBytes, bytes)) {
        return;
    }
    moment.codes = block.part(kMomentHeaderBytes, bytes);
    while (!moment.name.empty() && moment.name.back() == ' ') {
        moment.name.pop_back();
    }
    radial.moments.push_back(std::move(moment));
}

void parseBlock(BigEndian block, Radial& radial) {
    const std::string name = block.text(0, 4);
    if (name == "RVOL") {
        parseVolume(block, radial);
    } else if (name == "RELV") {
        parseElevation(block, radial);
    } else if (name == "RRAD") {
        radial.nyquist = block.i16(16) / 100.0;
    } else if (!name.empty() && name[0] == 'D') {
        parseMoment(block, radial);
    }
}

bool isPossible(const Radial& radial) {
    return std::isfinite(radial.azimuthDeg) && std::isfinite(radial.elevationDeg) &&
           std::abs(radial.azimuthDeg) <= 720 && std::abs(radial.elevationDeg) <= 180;
}

/* Where a moment of a message of type 1 is described in it. */
struct FixedMoment {
    const char* name;
    std::size_t pointerAt, gatesAt, firstAt, spacingAt;
    double scale, offset;
};

constexpr FixedMoment kFixedMoments[] = {
    {"REF", 36, 26, 18, 22, 2, 66},
    {"VEL", 38, 28, 20, 24, 2, 129},
    {"SW", 40, 28, 20, 24, 2, 129},
};
constexpr int kWholeMetresPerSecond = 4;  // resolution of the velocity

void parseFixedMoment(BigEndian message, const FixedMoment& fixed, Radial& radial) {
    Moment moment;
    const std::size_t at = message.u16(fixed.pointerAt);
    moment.name = fixed.name;
    moment.gates = message.u16(fixed.gatesAt);
    moment.firstM = message.i16(fixed.firstAt);
    moment.spacingM = message.u16(fixed.spacingAt);
    moment.scale = fixed.scale;
    moment.offset = fixed.offset;
    if (moment.name == "VEL" && message.u16(42) == kWholeMetresPerSecond) {
        moment.scale = 1;
    }
    const auto gates = static_cast<std::size_t>(moment.gates);
    if (at == 0 || gates == 0 || moment.spacingM == 0 || !message.holds(at, gates)) {
        return;
    }
    moment.codes = message.part(at, gates);
    radial.moments.push_back(std::move(moment));
}

}  // namespace

std::optional<Radial> parseMessage31(BigEndian message) {
    Radial radial;
    radial.timeS = timeOf(message.u16(8), message.u32(4));
    radial.azimuthDeg = message.f32(12);
    radial.status = message.u8(21);
    radial.elevationNumber = message.u8(22);
    radial.elevationDeg = message.f32(24);
    const std::size_t blocks = std::min<std::size_t>(message.u16(30), kMaxBlocks);
    if (message.failed() || message.u8(16) != 0 || !isPossible(radial)) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < blocks; ++i) {
        const std::size_t at = message.u32(kPointersAt + 4 * i);
        if (at != 0 && at < message.size()) {
            parseBlock(message.part(at), radial);
        }
    }
    return radial;
}

std::optional<Radial> parseMessage1(BigEndian message) {
    Radial radial;
    radial.timeS = timeOf(message.u16(4), message.u32(0));
    radial.azimuthDeg = message.u16(8) * kCodedDegrees;
    radial.status = message.u16(12);
    radial.elevationDeg = std::remainder(message.u16(14) * kCodedDegrees, 360.0);
    radial.elevationNumber = message.u16(16);
    radial.nyquist = message.i16(60) / 100.0;
    const double calibration = message.f32(32);
    if (message.failed()) {
        return std::nullopt;
    }
    if (std::isfinite(calibration) && calibration != 0) {
        radial.calibrationDb = calibration;
    }
    for (const FixedMoment& fixed : kFixedMoments) {
        parseFixedMoment(message, fixed, radial);
    }
    return radial;
}

}  // namespace scan::nexrad
