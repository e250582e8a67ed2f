/*
 * Values of a record at given points: x and y in a Cartesian record, range and azimuth in a polar
 * one. Quotients by the gate size are single precision and truncated toward zero.
 */
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>

#include "base/array.h"
#include "base/constants.h"
#include "base/message.h"
#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cpluvek.h"
#include "dsp/search/nearest.h"
#include "model/coordinates.h"

using namespace clutter::model;

namespace {

constexpr float kOutside = -9999.0f;
constexpr int kNoCell = -1;

/* Substitutes for quotients that do not fit an int. */
constexpr int kFarBelow = INT_MIN;
constexpr int kFarAbove = INT_MAX;

/* Truncation toward zero; NaN is far below. */
int truncated(float quotient) {
    if (!(quotient > static_cast<float>(INT_MIN))) {
        return kFarBelow;
    }
    if (quotient >= -static_cast<float>(INT_MIN)) {
        return kFarAbove;
    }
    return static_cast<int>(quotient);
}

/* Truncation puts a point less than one cell below the origin into cell 0. */
int cellOf(float quotient, int count) {
    const int cell = truncated(quotient);
    return cell >= 0 && cell < count ? cell : kNoCell;
}

/* Finds the ray nearest to an azimuth. Sorting the rays first pays only for many points. */
class RayFinder {
  public:
    RayFinder(float* azimuths, int nrays, int points)
        : azimuths_(azimuths),
          nrays_(nrays),
          nearest_(azimuths, points >= kMinPointsToSort ? nrays : 0),
          sorted_(points >= kMinPointsToSort) {}

    std::ptrdiff_t rayAt(float azimuthDeg) const {
        const auto target =
            static_cast<float>(static_cast<double>(azimuthDeg) * clutter::base::kPi / 180.0);
        if (sorted_) {
            return nearest_.indexOf(target);
        }
        float value = 0.0f;
        int index = 0;
        CDSP().GetNearest(azimuths_, nrays_, target, value, index);
        return index;
    }

  private:
    static constexpr int kMinPointsToSort = 16;

    float* azimuths_;
    int nrays_;
    clutter::dsp::NearestValue nearest_;
    bool sorted_;
};

bool canSampleRanges(const Cpluvek& record) {
    if (record.data == nullptr || record.angles == nullptr) {
        return false;
    }
    if (clutter::base::cellCount(record.ngates, record.nrays) == 0) {
        return false;
    }
    return record.coordtype == kPolar || record.coordtype == kForeignPolar;
}

/* Past the last gate, the last one. A negative gate is counted back through the block, at most to
 * its first value. */
std::ptrdiff_t sampleIndex(const Cpluvek& record, std::ptrdiff_t ray, float range) {
    const int gate = std::min(truncated(range / record.gatesize), record.ngates - 1);
    return std::max(ray * record.ngates + gate, std::ptrdiff_t{0});
}

struct Window {
    int wgates;
    int wrays;
};

struct Sample {
    std::ptrdiff_t ray;
    int gate;
};

/* Searches the window around a sample, ray by ray, for a value other than invalid. Offsets run from
 * -(w / 2) to w / 2. Rays and end gates that the window repeats are searched once: only the first
 * find counts. */
bool findValid(const Cpluvek& record, float invalid, const Window& window, Sample& sample) {
    const std::int64_t halfRays = window.wrays / 2;
    const std::int64_t halfGates = window.wgates / 2;
    if (halfRays < 0 || halfGates < 0) {
        return false;
    }
    const std::int64_t rays = record.nrays;
    const std::int64_t last = record.ngates - 1;
    const std::int64_t from = std::clamp<std::int64_t>(sample.gate - halfGates, 0, last);
    const std::int64_t to = std::clamp<std::int64_t>(sample.gate + halfGates, 0, last);
    const std::int64_t visits = std::min(2 * halfRays + 1, rays);
    const std::int64_t start = ((sample.ray - halfRays) % rays + rays) % rays;
    for (std::int64_t k = 0; k < visits; ++k) {
        const std::int64_t ray = (start + k) % rays;
        const float* values = record.data + ray * record.ngates;
        for (std::int64_t gate = from; gate <= to; ++gate) {
            if (values[gate] == invalid) {
                continue;
            }
            sample = {static_cast<std::ptrdiff_t>(ray), static_cast<int>(gate)};
            return true;
        }
    }
    return false;
}

/* Whether a sample, counted on through the block, is inside it and holds the invalid value. */
bool holds(const Cpluvek& record, float invalid, const Sample& sample) {
    const std::int64_t at = std::int64_t{sample.ray} * record.ngates + sample.gate;
    if (at < 0) {
        return false;
    }
    if (static_cast<std::size_t>(at) >= clutter::base::cellCount(record.ngates, record.nrays)) {
        return false;
    }
    return record.data[at] == invalid;
}

}  // namespace

int Cpluvek::ExtractDataXY(float* xy, float* out, int n) {
    if (this == nullptr) {
        clutter::base::report("No data to extract (pointer is NULL)\n");
        return 0;
    }
    if (coordtype != kCartesian) {
        clutter::base::report("This radar data file is not in cartesian coordinates ...\n");
        return 0;
    }
    if (data == nullptr) {
        clutter::base::report("No data to extract (pointer is NULL)\n");
        return 0;
    }
    if (xy == nullptr || out == nullptr) {
        return 0;
    }
    const float* ys = xy + std::max(n, 0);
    for (int i = 0; i < n; ++i) {
        const int ix = cellOf((xy[i] - axislimits0[0]) / gatesize, nrays);
        const int iy = cellOf((ys[i] - axislimits0[3]) / gatesize, ngates);
        const bool inside = ix != kNoCell && iy != kNoCell;
        out[i] = inside ? data[static_cast<std::ptrdiff_t>(ix) * ngates + iy] : kOutside;
    }
    return 1;
}

int Cpluvek::ExtractDataRA(float* ranges, float* azimuths, float* out, int n) {
    if (!canSampleRanges(*this)) {
        return 0;
    }
    if (ranges == nullptr || azimuths == nullptr || out == nullptr) {
        return 0;
    }
    const RayFinder finder(angles + 1, nrays, n);
    for (int i = 0; i < n; ++i) {
        out[i] = data[sampleIndex(*this, finder.rayAt(azimuths[i]), ranges[i])];
    }
    return 1;
}

int Cpluvek::FindValidDataRA(float* ranges, float* azimuths, float invalid, int n, float* outranges,
                             float* outazimuths, int wgates, int wrays) {
    if (!canSampleRanges(*this)) {
        return 0;
    }
    if (ranges == nullptr || azimuths == nullptr) {
        return 0;
    }
    if (outranges == nullptr || outazimuths == nullptr) {
        return 0;
    }
    const RayFinder finder(angles + 1, nrays, n);
    for (int i = 0; i < n; ++i) {
        Sample sample{finder.rayAt(azimuths[i]), truncated(ranges[i] / gatesize)};
        outranges[i] = ranges[i];
        outazimuths[i] = azimuths[i];
        if (!holds(*this, invalid, sample)) {
            continue;
        }
        if (!findValid(*this, invalid, {wgates, wrays}, sample)) {
            continue;
        }
        outranges[i] = static_cast<float>(sample.gate) * gatesize;
        outazimuths[i] = static_cast<float>(static_cast<double>(angles[1 + sample.ray]) * 180.0 /
                                            clutter::base::kPi);
    }
    return 1;
}
