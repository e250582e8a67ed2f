/*
 * Words of the header by their offset; sums and units as the format defines them.
 */
#include "formats/polar/header.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "base/constants.h"
#include "base/files/claims.h"
#include "base/message.h"
#include "base/number.h"
#include "formats/polar/layout.h"

namespace clutter::formats {
namespace {

constexpr std::size_t kMagicLetters = 4;

/* Words by their offset; 0 past the end of the file. */
class HeaderWords {
  public:
    explicit HeaderWords(base::Bytes file) {
        std::copy_n(file.begin(), std::min(file.size(), bytes_.size()), bytes_.begin());
    }

    int number(std::size_t offset) const { return at<std::int16_t>(offset); }
    double count(std::size_t offset) const { return at<std::uint16_t>(offset); }
    float degrees(std::size_t offset) const {
        return static_cast<float>(count(offset) + count(offset + 2) / 60 +
                                  count(offset + 4) / 3600);
    }

  private:
    template <class Word>
    Word at(std::size_t offset) const {
        Word word;
        std::memcpy(&word, bytes_.data() + offset, sizeof word);
        return word;
    }

    std::array<unsigned char, kPolarHeaderBytes> bytes_ = {};
};

bool hasMagic(base::Bytes file) {
    const auto starts = [&](const char* magic) {
        return std::memcmp(file.data(), magic, kMagicLetters) == 0;
    };
    return file.size() >= kMagicLetters && (starts(kMagicPlain) || starts(kMagicExchanged));
}

void readTime(const HeaderWords& words, PolarHeader& header) {
    int* const parts[] = {&header.year, &header.month,  &header.day,
                          &header.hour, &header.minute, &header.second};
    std::size_t offset = polar_offset::kTime;
    for (int* part : parts) {
        *part = words.number(offset);
        offset += 2;
    }
}

void readSite(const HeaderWords& words, PolarHeader& header) {
    header.longitude = words.degrees(polar_offset::kLongitude);
    header.latitude = words.degrees(polar_offset::kLatitude);
    for (std::size_t i = 0; i < 2; ++i) {
        const double kilometres = words.count(polar_offset::kHeights + 2 * i) / 10;
        header.heights[i] = static_cast<float>(kilometres * 1000);
    }
    header.altitude = static_cast<float>(words.count(polar_offset::kAltitude));
}

void readRadar(const HeaderWords& words, PolarHeader& header) {
    header.radarconst = static_cast<float>(words.count(polar_offset::kRadarConstant) / 10);
    header.wavelength = static_cast<float>(words.count(polar_offset::kWavelength) / 1000);
    header.pulsedepth = static_cast<float>(words.count(polar_offset::kPulseLength));
    header.rpm = static_cast<float>(words.count(polar_offset::kRotation) / 360);
    header.prf = static_cast<float>(words.count(polar_offset::kRepetition));
    // Pulses of one ray; the header word for it is ignored.
    const auto rays = static_cast<float>(words.number(polar_offset::kRays));
    header.nsamples = 60.0f / header.rpm / rays * header.prf;
    header.nyquist = static_cast<float>(words.count(polar_offset::kNyquist) * 0.01);
}

void readGrid(const HeaderWords& words, PolarHeader& header) {
    header.nrays = words.number(polar_offset::kRays);
    header.ngates = words.number(polar_offset::kGates);
    const int raysAgain = words.number(polar_offset::kRaysAgain);
    const int gatesAgain = words.number(polar_offset::kGatesAgain);
    if (raysAgain >= 1 && gatesAgain >= 1) {
        header.nrays = raysAgain;
        header.ngates = gatesAgain;
    }
    const double length = words.count(polar_offset::kGateLength);
    header.gatesize = static_cast<float>(length);
    if (length > 0) {
        header.firstgate = base::truncateToInt(words.count(polar_offset::kFirstGate) / length);
    }
}

float readElevation(const HeaderWords& words, short product) {
    if (product != kIndexedElevationProduct) {
        const double degrees = words.number(polar_offset::kElevation) / 10.0;
        return static_cast<float>(degrees * base::kPi / 180);
    }
    const int index = words.number(polar_offset::kElevationIndex);
    const bool known = index >= 0 && index < static_cast<int>(std::size(kIndexedElevations));
    return static_cast<float>(kIndexedElevations[known ? index : 0] * base::kPi / 180);
}

}  // namespace

int readPolarHeader(base::Bytes file, PolarHeader& header) {
    if (!hasMagic(file)) {
        return kPolarUnusable;
    }
    const HeaderWords words(file);
    header.product = static_cast<short>(words.number(polar_offset::kProduct));
    if (fieldsOfProduct(header.product) == 0) {
        return kPolarUnknownProduct;
    }
    readTime(words, header);
    readSite(words, header);
    readRadar(words, header);
    readGrid(words, header);
    header.elevation = readElevation(words, header.product);
    if (header.nrays < 1 || header.ngates < 1) {
        base::report(
            "the number of rays or gates should be bigger than 0!  (nrays=%d, ngates=%d)\n",
            header.nrays, header.ngates);
        return kPolarUnusable;
    }
    const auto fields = static_cast<std::size_t>(fieldsOfProduct(header.product));
    return base::mayDeclare(fields * header.cells(), file.size()) ? kPolarRead : kPolarUnusable;
}

void storePolarHeader(const PolarHeader& header, Cpluvek& record) {
    record.radarid = header.product;
    record.nrecords = fieldsOfProduct(header.product);
    record.nrays = header.nrays;
    record.ngates = header.ngates;
    record.year = header.year;
    record.month = header.month;
    record.day = header.day;
    record.hour = header.hour;
    record.minute = header.minute;
    record.second = header.second;
    record.longitude = header.longitude;
    record.latitude = header.latitude;
    std::copy_n(header.heights, 2, record.gridxy);
    record.altitude = header.altitude;
    record.radarconst = header.radarconst;
    record.wavelength = header.wavelength;
    record.gatesize = header.gatesize;
    record.firstgate = header.firstgate;
    record.pulsedepth = header.pulsedepth;
    record.rpm = header.rpm;
    record.prf = header.prf;
    record.nsamples = header.nsamples;
    record.nyquist = header.nyquist;
}

}  // namespace clutter::formats
