/*
 * German DX files into memory (docs/formats/german-dx.md).
 */
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <numeric>
#include <string>
#include <string_view>

#include "base/files/byte_cursor.h"
#include "base/files/file.h"
#include "base/message.h"
#include "clutterclassifier/CGermanRadar.h"
#include "formats/dx/layout.h"

using clutter::base::ByteCursor;
using clutter::base::Bytes;
using namespace clutter::formats;

namespace {

constexpr const char* kNoRay = "\tError when searching for new ray";

/* --- the text header --- */

std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/* The number at the start of digits, after blanks; 0 without a number. */
int numberOf(Bytes digits) {
    int value = 0;
    while (!digits.empty() && digits[0] == ' ') {
        digits = digits.subspan(1);
    }
    for (const unsigned char c : digits) {
        if (c < '0' || c > '9') {
            break;
        }
        value = 10 * value + (c - '0');
    }
    return value;
}

struct DxTime {
    int day, hour, minute, month, year;
};

/* Reads up to the message; false when a token is missing. */
[[nodiscard]] bool readHeader(ByteCursor& file, DxTime& time) {
    if (textOf(file.skip(2)) != kDxStart) {
        return false;
    }
    time.day = numberOf(file.skip(2));
    time.hour = numberOf(file.skip(2));
    time.minute = numberOf(file.skip(2));
    file.skip(kDxStationBytes);
    time.month = numberOf(file.skip(2));
    time.year = numberOf(file.skip(2)) + kDxCentury;
    for (const DxToken& token : kDxTokens) {
        if (textOf(file.skip(2)) != token.name) {
            return false;
        }
        file.skip(token.bytes);
    }
    return textOf(file.skip(2)) == kDxMessage;
}

/* A message longer than the file leaves no bytes, so that the first ray is missing. */
void skipMessage(ByteCursor& file) {
    const Bytes digits = file.skip(std::min(kDxMessageDigits, file.remaining()));
    file.skip(std::min(static_cast<std::size_t>(numberOf(digits)), file.remaining()));
}

/* --- rays --- */

/* Two bytes of a ray; zeros past the end of the file, which failed() of the cursor reports. */
struct BinPair {
    unsigned char value = 0;
    unsigned char kind = 0;

    bool isRun() const { return kind == kDxRun; }
};

BinPair readPair(ByteCursor& file) {
    const Bytes bytes = file.skip(2);
    return bytes.empty() ? BinPair{} : BinPair{bytes[0], bytes[1]};
}

unsigned littleWord(ByteCursor& file) {
    const BinPair bytes = readPair(file);
    return bytes.value | static_cast<unsigned>(bytes.kind) << 8;
}

/* The number of bins of the ray that starts here, or a number above the largest count. A value of 0
 * ends the count too: it may belong to the marker of the next ray. */
int countBins(ByteCursor file) {
    int count = 0;
    while (count <= kDxSlots) {
        const BinPair pair = readPair(file);
        if (file.failed() || pair.value == kDxMarker[0] || pair.kind == kDxMarker[1]) {
            break;
        }
        count += pair.isRun() ? pair.value : 1;
    }
    return count;
}

void decodeBins(ByteCursor& file, int bins, double* out) {
    std::fill_n(out, bins, kDxEmptyDbz);
    for (int b = 0; b < bins && !file.failed();) {
        const BinPair pair = readPair(file);
        if (pair.isRun()) {
            b += pair.value;
        } else {
            out[b++] = pair.value * kDxStepDbz + kDxEmptyDbz;
        }
    }
}

/* Bytes between the header and the first ray. */
void skipFiller(ByteCursor& file) {
    for (ByteCursor next = file; next.remaining() > 0; file = next) {
        if (next.skip(1)[0] != kDxFiller) {
            return;
        }
    }
}

bool isMarker(ByteCursor& file) {
    const BinPair pair = readPair(file);
    return !file.failed() && pair.value == kDxMarker[0] && pair.kind == kDxMarker[1];
}

/* Marker and angles of a ray; false when they are missing. */
[[nodiscard]] bool readAngles(ByteCursor& file, int r, CGermanRadar& radar) {
    if (!isMarker(file)) {
        return false;
    }
    const unsigned azimuth = littleWord(file), elevation = littleWord(file);
    if (file.failed()) {
        return false;
    }
    radar.azimuth[r] = azimuth / 10.0;
    radar.elevation[r] = elevation / 10.0;
    return true;
}

/* False when a ray is missing or cut. */
[[nodiscard]] bool readRays(ByteCursor& file, CGermanRadar& radar) {
    skipFiller(file);
    for (int r = 0; r < kDxRays; ++r) {
        if (!readAngles(file, r, radar)) {
            return false;
        }
        if (r == 0) {
            const int bins = countBins(file);
            if (!isDxBinCount(bins)) {
                return true;
            }
            radar.bins = bins;
        }
        decodeBins(file, radar.bins, radar.reflectivity + std::ptrdiff_t{r} * kDxSlots);
        if (file.failed()) {
            return false;
        }
    }
    return true;
}

}  // namespace

CGermanRadar::CGermanRadar()
    : year(0),
      month(0),
      day(0),
      hour(0),
      minute(0),
      second(0),
      reflectivity{},
      elevation{},
      bins(kDxSlots),
      nrays(kDxRays),
      loaded(0),
      factor(1.0) {
    std::iota(std::begin(azimuth), std::end(azimuth), 0.0);
}

CGermanRadar::~CGermanRadar() {}

int CGermanRadar::readbinaryfile(char* path) {
    loaded = 0;
    const auto bytes = clutter::base::readWholeFile(path);
    if (!bytes) {
        return 0;
    }
    ByteCursor file(*bytes);
    DxTime time;
    if (!readHeader(file, time)) {
        return 0;
    }
    year = time.year;
    month = time.month;
    day = time.day;
    hour = time.hour;
    minute = time.minute;
    skipMessage(file);
    if (!readRays(file, *this)) {
        clutter::base::report("%s\n", kNoRay);
        return 0;
    }
    loaded = 1;
    return 1;
}
