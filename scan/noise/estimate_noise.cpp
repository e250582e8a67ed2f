#include "scan/noise/estimate_noise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

namespace scan {
namespace {

constexpr double kPeakHalfWidthDb = 3;       // noise of a ring lies mostly within this of its peak
constexpr double kMinPeakShare = 0.12;       // of a ring's values, for a peak to be noise
constexpr double kSharePeak = 0.25;          // enough whatever the shape of the peak
constexpr double kMinTail = 0.3;             // below the peak, of what is in it
constexpr double kWeatherCorrelation = 0.9;  // median above it: no noise
constexpr double kAgreementDb = 2;           // between rings that show the same noise
constexpr double kMinAgreeing = 0.3;         // of the rings
constexpr double kSteepest = -0.6;           // dB per dB of spreading: 0 noise, -1 uniform rain
constexpr double kDeepestWeakDb = 8;         // below the noise: noise covers what is weaker
constexpr double kDeepestMedianDb = 2;       // the same for half of the values
constexpr double kEnvelope = 0.1;            // of the rings lie below the envelope of all

struct Peak {
    double spreadingDb, level;
};

/* The median of the correlation is beyond the limit unless more than half of the values lie below
 * it. */
bool isWeather(const Ring& ring, double peak) {
    std::size_t count = 0;
    std::size_t low = 0;
    for (std::size_t i = 0; i < ring.correlation.size(); ++i) {
        const unsigned known = std::isfinite(ring.correlation[i]) ? 1 : 0;
        const unsigned near = std::abs(ring.levels[i] - peak) <= kPeakHalfWidthDb ? 1 : 0;
        const unsigned weather = ring.correlation[i] <= kWeatherCorrelation ? 1 : 0;
        count += known & near;
        low += known & near & weather;
    }
    return count >= kMinRingValues / 2 && low <= (count - 1) / 2;
}

/* Noise fills its ring, and has a tail below its peak, unlike weak echo that a threshold cuts off;
 * a tall peak needs none. */
bool isNoisePeak(const Ring& ring, double peak) {
    if (ring.filled < kNoiseFills) {
        return false;
    }
    long near = 0;
    long under = 0;
    for (double level : ring.levels) {
        near += std::abs(level - peak) <= kPeakHalfWidthDb ? 1 : 0;
        under += level < peak - kPeakHalfWidthDb ? 1 : 0;
    }
    const auto inside = static_cast<double>(near);
    const auto below = static_cast<double>(under);
    const double share = inside / static_cast<double>(ring.levels.size());
    if (share < kMinPeakShare || isWeather(ring, peak)) {
        return false;
    }
    return share >= kSharePeak || below >= kMinTail * inside;
}

/* Least-squares slope of the levels over the spreading. */
double slope(const Peak* begin, const Peak* end) {
    double meanX = 0;
    double meanY = 0;
    const auto count = static_cast<double>(end - begin);
    for (const Peak* p = begin; p != end; ++p) {
        meanX += p->spreadingDb / count;
        meanY += p->level / count;
    }
    double xy = 0;
    double xx = 0;
    for (const Peak* p = begin; p != end; ++p) {
        xy += (p->spreadingDb - meanX) * (p->level - meanY);
        xx += (p->spreadingDb - meanX) * (p->spreadingDb - meanX);
    }
    return xx > 0 ? xy / xx : 0;
}

/* Nothing is far below the noise in any ring, except in a few odd ones. */
bool isFloor(double level, const std::vector<Ring>& rings) {
    std::size_t deeper = 0;
    for (const Ring& ring : rings) {
        deeper += ring.weak < level - kDeepestWeakDb || ring.median < level - kDeepestMedianDb;
    }
    return 10 * deeper <= rings.size();
}

struct Agreement {
    double level = std::numeric_limits<double>::quiet_NaN();
    int rings = 0;
};

/* The level on which most rings agree; NaN when too few do, or when they fall off with range. */
Agreement agreedLevel(std::vector<Peak> peaks, const std::vector<Ring>& rings) {
    std::sort(peaks.begin(), peaks.end(),
              [](const Peak& a, const Peak& b) { return a.level < b.level; });
    const auto enough = static_cast<std::size_t>(kMinAgreeing * static_cast<double>(rings.size()));
    std::size_t best = std::max<std::size_t>(enough, 3) - 1;
    Agreement agreement;
    for (std::size_t low = 0; low < peaks.size(); ++low) {
        std::size_t high = low;
        while (high < peaks.size() && peaks[high].level <= peaks[low].level + kAgreementDb) {
            ++high;
        }
        if (high - low <= best) {
            continue;
        }
        const double middle = peaks[(low + high) / 2].level;
        if (slope(peaks.data() + low, peaks.data() + high) < kSteepest) {
            continue;
        }
        if (!isFloor(middle, rings)) {
            continue;
        }
        best = high - low;
        agreement = {middle, static_cast<int>(best)};
    }
    return agreement;
}

}  // namespace

NoiseEstimate estimateNoise(const std::vector<NoiseInput>& sweeps) {
    std::vector<Ring> rings;
    NoiseEstimate estimate;
    for (const NoiseInput& sweep : sweeps) {
        std::vector<Ring> found = collectRings(sweep);
        estimate.sweeps += !found.empty();
        std::move(found.begin(), found.end(), std::back_inserter(rings));
    }
    if (rings.empty()) {
        return {};
    }
    std::vector<Peak> peaks;
    std::vector<double> envelopes;
    for (const Ring& ring : rings) {
        envelopes.push_back(ring.envelope);
        const double peak = lowestPeak(ring);
        if (isNoisePeak(ring, peak)) {
            peaks.push_back({ring.spreadingDb, peak});
        }
    }
    estimate.rings = static_cast<int>(rings.size());
    const Agreement noise = agreedLevel(peaks, rings);
    estimate.agreeingRings = noise.rings;
    if (noise.rings > 0) {
        estimate.evidence = NoiseEvidence::kNoiseGates;
        estimate.radarConstantDb = -noise.level;
        estimate.minSnrDb = kEchoSnrDb;
    } else {
        estimate.evidence = NoiseEvidence::kLowerEnvelope;
        estimate.radarConstantDb = -quantile(std::move(envelopes), kEnvelope);
    }
    return estimate;
}

}  // namespace scan
