/*
 * A volume is a row of messages. All but those of type 31 take 2,432 bytes each; radials are of
 * type 31 or 1, type 5 is the plan of the volume with the fixed angles. Other types are skipped.
 */
#include "scan/formats/nexrad/read_nexrad.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <stdexcept>

#include "scan/calendar.h"
#include "scan/formats/nexrad/nexrad_radial.h"
#include "scan/formats/nexrad/nexrad_records.h"
#include "scan/formats/nexrad/nexrad_sweep.h"

namespace scan {
namespace nexrad {
namespace {

constexpr std::size_t kFrameBytes = 2432;
constexpr std::size_t kChannelBytes = 12;  // in front of every message
constexpr std::size_t kHeaderBytes = 16;
constexpr int kTypeRadial = 31, kTypeOldRadial = 1, kTypePlan = 5;
constexpr double kCodedDegrees = 180.0 / 32768;
constexpr double kUsualCalibrationDb = 100;  // its magnitude is less

struct Messages {
    std::vector<Radial> radials;
    std::map<int, double> fixedAngles;  // by elevation number
    int damaged = 0;
};

/* Pattern header of 22 bytes, then 46 bytes a cut. */
void parsePlan(BigEndian message, Messages& out) {
    constexpr std::size_t kCutsAt = 22, kCutBytes = 46;
    const int cuts = message.u16(6);
    for (int cut = 0; cut < cuts; ++cut) {
        const std::size_t at = kCutsAt + static_cast<std::size_t>(cut) * kCutBytes;
        if (!message.holds(at, kCutBytes)) {
            return;
        }
        out.fixedAngles[cut + 1] = message.u16(at) * kCodedDegrees;
    }
}

void parse(int type, const BigEndian& message, Messages& out) {
    if (type == kTypePlan) {
        parsePlan(message, out);
        return;
    }
    std::optional<Radial> radial =
        type == kTypeRadial ? parseMessage31(message) : parseMessage1(message);
    if (radial) {
        out.radials.push_back(std::move(*radial));
    } else {
        ++out.damaged;
    }
}

void parseBlock(BigEndian rest, Messages& out) {
    while (rest.holds(kChannelBytes, kHeaderBytes)) {
        if (std::memcmp(rest.bytes(), "AR2V", 4) == 0 ||
            std::memcmp(rest.bytes(), "ARCHIVE2", 8) == 0) {
            return;  // another volume
        }
        const std::size_t messageBytes = 2 * static_cast<std::size_t>(rest.u16(kChannelBytes));
        const int type = rest.u8(kChannelBytes + 3);
        const bool variable = type == kTypeRadial && messageBytes > kHeaderBytes;
        const std::size_t frame = variable ? kChannelBytes + messageBytes : kFrameBytes;
        if (type == kTypeRadial || type == kTypeOldRadial || type == kTypePlan) {
            out.damaged += variable && !rest.holds(0, frame);
            parse(type,
                  rest.part(kChannelBytes + kHeaderBytes, frame - kChannelBytes - kHeaderBytes),
                  out);
        }
        rest = rest.part(frame);
    }
}

bool beginsSweep(const Radial& radial, const Radial& before) {
    constexpr int kBeginsElevation = 0, kBeginsVolume = 3, kBeginsLastElevation = 5;
    return radial.elevationNumber != before.elevationNumber || radial.status == kBeginsElevation ||
           radial.status == kBeginsVolume || radial.status == kBeginsLastElevation;
}

void addSweeps(const Messages& messages, ValueBudget& budget, Scan& scan) {
    const std::vector<Radial>& radials = messages.radials;
    std::string coarse;
    for (std::size_t begin = 0, end = 0; begin < radials.size(); begin = end) {
        for (end = begin + 1; end < radials.size(); ++end) {
            if (beginsSweep(radials[end], radials[end - 1])) {
                break;
            }
        }
        const int number = radials[begin].elevationNumber;
        const auto angle = messages.fixedAngles.find(number);
        try {
            scan.sweeps.push_back(sweepOf(
                {&radials[begin], end - begin},
                angle == messages.fixedAngles.end() ? std::nullopt : std::optional(angle->second),
                budget, coarse));
        } catch (const std::runtime_error& error) {
            scan.damage.push_back("Elevation " + std::to_string(number) + " " + error.what() + ".");
            continue;
        }
        if (!coarse.empty() &&
            std::find(scan.oddities.begin(), scan.oddities.end(), coarse) == scan.oddities.end()) {
            scan.oddities.push_back(coarse);
        }
    }
}

/* Elevation numbers repeat where a file holds pieces of several volumes: sweeps are then counted.
 */
void numberSweeps(Scan& scan) {
    bool rising = true;
    for (std::size_t i = 1; i < scan.sweeps.size(); ++i) {
        rising &= scan.sweeps[i].number > scan.sweeps[i - 1].number;
    }
    for (std::size_t i = 0; !rising && i < scan.sweeps.size(); ++i) {
        scan.sweeps[i].number = static_cast<int>(i) + 1;
    }
}

void fillSite(const Records& records, const Messages& messages, Scan& scan) {
    BigEndian header(records.header.data(), records.header.size());
    scan.radarName = header.text(20, 4).c_str();
    const Radial& first = messages.radials.front();
    scan.time = dateTimeOf(first.timeS);
    const auto placed = std::find_if(messages.radials.begin(), messages.radials.end(),
                                     [](const Radial& radial) { return radial.latitudeDeg; });
    if (placed == messages.radials.end()) {
        scan.oddities.push_back("The file does not say where the radar is.");
    } else {
        scan.latitudeDeg = *placed->latitudeDeg;
        scan.longitudeDeg = *placed->longitudeDeg;
        scan.altitudeM = *placed->altitudeM;
    }
    if (first.calibrationDb && std::abs(*first.calibrationDb) < kUsualCalibrationDb &&
        *first.calibrationDb != 0) {
        scan.hasRadarConstant = true;
        scan.radarConstantDb = -*first.calibrationDb;
    }
}

}  // namespace
}  // namespace nexrad

Scan readNexrad(const std::string& path) {
    using namespace nexrad;
    Records records = readRecords(path);
    Messages messages;
    std::size_t bytes = 0;
    for (const Block& block : records.blocks) {
        parseBlock({block.data(), block.size()}, messages);
        bytes += block.size();
    }
    Scan scan;
    scan.format = "NEXRAD Level 2";
    scan.damage = std::move(records.damage);
    scan.oddities = std::move(records.oddities);
    if (messages.damaged > 0) {
        scan.damage.push_back(std::to_string(messages.damaged) +
                              " radials are damaged and left out.");
    }
    ValueBudget budget(bytes);
    addSweeps(messages, budget, scan);
    if (scan.sweeps.empty()) {
        throw std::runtime_error(scan.damage.empty() ? "holds no sweeps"
                                                     : "holds no sweeps: " + scan.damage[0]);
    }
    numberSweeps(scan);
    fillSite(records, messages, scan);
    return scan;
}

}  // namespace scan
