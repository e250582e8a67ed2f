/* Finds the noise floor: rings, their peaks, and the level on which the rings agree. */
#include "scan/classes/calibration.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "scan/fields/value_summary.h"
#include "scan/quantile.h"
#include "scan/scan.h"

namespace scan {
namespace {

constexpr int kMaxRings = 32;  // blocks of gates, each with a histogram of its own
constexpr int kMinRings = 8;
constexpr int kNearShare = 8;                // the nearest eighth is full of clutter and side lobes
constexpr std::size_t kMinValues = 40;       // a ring with fewer is ignored
constexpr double kBinDb = 0.5;               // of the histogram of a ring
constexpr double kLowestDb = -120;           // of the histogram; wider than any radar
constexpr int kBins = 480;                   // to +120 dB
constexpr int kSmoothBins = 3;               // to each side: quantised values leave gaps
constexpr double kPeakHalfWidthDb = 3;       // noise of a ring lies mostly within this of its peak
constexpr double kMinPeakShare = 0.12;       // of a ring's values, for a peak to be noise
constexpr double kSharePeak = 0.25;          // enough whatever the shape of the peak
constexpr double kMinTail = 0.3;             // below the peak, of what is in it
constexpr double kHighPeak = 0.5;            // of the highest: a lower peak that counts as well
constexpr double kWeatherCorrelation = 0.9;  // median above it: no noise
constexpr double kAgreementDb = 2;           // between rings that show the same noise
constexpr double kMinAgreeing = 0.3;         // of the rings
constexpr double kSteepest = -0.6;           // dB per dB of spreading: 0 noise, -1 uniform rain
constexpr double kMedianShare = 0.5;
constexpr double kWeakShare = 0.1;       // of a ring's values are its weak ones
constexpr double kDeepestWeakDb = 8;     // below the noise: noise covers what is weaker
constexpr double kDeepestMedianDb = 2;   // the same for half of the values
constexpr double kEnvelopeShare = 0.01;  // of a ring's values lie below its envelope
constexpr double kMarkerShare = 0.02;    // of all gates at the lowest value: a marker

using Values = std::vector<double>;

struct Ring {
    double spreadingDb = 0;                     // 20 log10(range in km) of its middle
    Values levels;                              // Z - 20 log10(range) of its gates
    std::vector<float> correlation;             // of the same gates; empty when there is none
    std::vector<int> inBin;                     // histogram of the levels
    double median = 0, weak = 0, envelope = 0;  // their quantiles
};

struct Peak {
    double spreadingDb, level;
};

/* The lowest value, if too many gates share it for a measurement. */
float noEchoMarker(const std::vector<float>& values) {
    const ValueSummary summary = summarise(values, Role::kNone);
    const auto sharing = std::count(values.begin(), values.end(), summary.lowest);
    const bool marker =
        static_cast<double>(sharing) > kMarkerShare * static_cast<double>(summary.count);
    return marker ? summary.lowest : kNoValue;
}

double quantile(Values values, double share) {
    return valueOfRank(values, rankOfShare(share, values.size()));
}

std::size_t binOf(double level) {
    return static_cast<std::size_t>(
        std::clamp((level - kLowestDb) / kBinDb, 0.0, static_cast<double>(kBins - 1)));
}

/* The value of a rank among sorted levels: only those of its bin are sorted. */
double levelOfRank(const Ring& ring, const std::vector<std::uint16_t>& bins, std::ptrdiff_t rank) {
    std::size_t bin = 0;
    while (rank >= ring.inBin[bin]) {
        rank -= ring.inBin[bin++];
    }
    Values values;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        if (bins[i] == bin) {
            values.push_back(ring.levels[i]);
        }
    }
    return valueOfRank(values, static_cast<std::size_t>(rank));
}

void fillDistribution(Ring& ring) {
    std::vector<std::uint16_t> bins(ring.levels.size());
    std::transform(ring.levels.begin(), ring.levels.end(), bins.begin(),
                   [](double level) { return static_cast<std::uint16_t>(binOf(level)); });
    ring.inBin.assign(kBins, 0);
    for (const std::uint16_t bin : bins) {
        ++ring.inBin[bin];
    }
    const auto quantileOf = [&](double share) {
        return levelOfRank(ring, bins,
                           static_cast<std::ptrdiff_t>(rankOfShare(share, bins.size())));
    };
    ring.median = quantileOf(kMedianShare);
    ring.weak = quantileOf(kWeakShare);
    ring.envelope = quantileOf(kEnvelopeShare);
}

double spreadingDb(double gate, double gateSpacingM) {
    return 20 * std::log10(gate * gateSpacingM / 1000);
}

/* Fills one ring from the gates first to last - 1 of all rays. */
Ring collectRing(const std::vector<float>& reflectivity, const std::vector<float>& correlation,
                 int nrays, int ngates, int first, int last, double gateSpacingM) {
    Ring ring;
    ring.spreadingDb = spreadingDb(0.5 * (first + last), gateSpacingM);
    Values spreading;
    for (int g = first; g < last; ++g) {
        spreading.push_back(spreadingDb(g, gateSpacingM));
    }
    const std::size_t most = spreading.size() * static_cast<std::size_t>(nrays);
    ring.levels.resize(most);
    ring.correlation.resize(correlation.empty() ? 0 : most);
    std::size_t count = 0;
    for (int r = 0; r < nrays; ++r) {
        for (int g = first; g < last; ++g) {
            const std::size_t at = static_cast<std::size_t>(r) * static_cast<std::size_t>(ngates) +
                                   static_cast<std::size_t>(g);
            ring.levels[count] = reflectivity[at] - spreading[static_cast<std::size_t>(g - first)];
            if (!correlation.empty()) {
                ring.correlation[count] = correlation[at];
            }
            count += std::isfinite(reflectivity[at]) ? 1 : 0;  // else the next one takes its place
        }
    }
    ring.levels.resize(count);
    ring.correlation.resize(correlation.empty() ? 0 : count);
    return ring;
}

/* Few rings for a small scan, so that each holds enough values; rings with too little are dropped.
 */
std::vector<Ring> collectRings(std::vector<float> reflectivity,
                               const std::vector<float>& correlation, int nrays, int ngates,
                               double gateSpacingM) {
    const float marker = noEchoMarker(reflectivity);
    std::replace_if(
        reflectivity.begin(), reflectivity.end(),
        [marker](float value) { return value == marker || value == kNoRainDbz; }, kNoValue);
    const auto present = std::count_if(reflectivity.begin(), reflectivity.end(),
                                       [](float value) { return std::isfinite(value); });
    const int count = static_cast<int>(
        std::clamp<long>(present / (2 * static_cast<long>(kMinValues)), kMinRings, kMaxRings));
    std::vector<Ring> rings;
    for (long i = count / kNearShare; i < count; ++i) {
        const int first = std::max(1, static_cast<int>(i * ngates / count));
        const int last = static_cast<int>((i + 1) * ngates / count);
        Ring ring =
            collectRing(reflectivity, correlation, nrays, ngates, first, last, gateSpacingM);
        if (ring.levels.size() >= kMinValues) {
            fillDistribution(ring);
            rings.push_back(std::move(ring));
        }
    }
    return rings;
}

Values smoothHistogram(const std::vector<int>& inBin) {
    Values counts(kBins, 0.0);
    for (int bin = 0; bin < kBins; ++bin) {
        for (int b = std::max(0, bin - kSmoothBins); b <= std::min(kBins - 1, bin + kSmoothBins);
             ++b) {
            counts[static_cast<std::size_t>(b)] +=
                inBin[static_cast<std::size_t>(bin)] * (1 + kSmoothBins - std::abs(b - bin));
        }
    }
    return counts;
}

/* The lowest of the high peaks: above it may be another one of weather. */
double lowestPeak(const Ring& ring) {
    const Values counts = smoothHistogram(ring.inBin);
    const double least = kHighPeak * *std::max_element(counts.begin(), counts.end());
    std::size_t bin = 0;
    while (counts[bin] < least) {
        ++bin;
    }
    while (bin + 1 < counts.size() && counts[bin + 1] >= counts[bin]) {
        ++bin;
    }
    return kLowestDb + (static_cast<double>(bin) + 0.5) * kBinDb;
}

/* The median is beyond the limit unless more than half of the values lie below it. */
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
    return count >= kMinValues / 2 && low <= rankOfShare(kMedianShare, count);
}

/* Noise has a tail below its peak, unlike weak echo that a threshold cuts off; a tall peak needs
 * none. */
bool isNoisePeak(const Ring& ring, double peak) {
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

/* The level on which most rings agree; NaN when too few do, or when they fall off with range. */
double agreedLevel(std::vector<Peak> peaks, const std::vector<Ring>& rings) {
    std::sort(peaks.begin(), peaks.end(),
              [](const Peak& a, const Peak& b) { return a.level < b.level; });
    const auto enough = static_cast<std::size_t>(kMinAgreeing * static_cast<double>(rings.size()));
    std::size_t best = std::max<std::size_t>(enough, 3) - 1;
    double level = std::numeric_limits<double>::quiet_NaN();
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
        level = middle;
    }
    return level;
}

}  // namespace

Calibration estimateCalibration(const std::vector<float>& reflectivity,
                                const std::vector<float>& correlation, int nrays, int ngates,
                                double gateSpacingM) {
    std::vector<Peak> peaks;
    Values envelopes;
    const std::vector<Ring> rings =
        collectRings(reflectivity, correlation, nrays, ngates, gateSpacingM);
    for (const Ring& ring : rings) {
        envelopes.push_back(ring.envelope);
        const double peak = lowestPeak(ring);
        if (isNoisePeak(ring, peak)) {
            peaks.push_back({ring.spreadingDb, peak});
        }
    }
    if (envelopes.empty()) {
        return {};
    }
    const double noise = agreedLevel(peaks, rings);
    if (std::isfinite(noise)) {
        return {NoiseEvidence::kNoiseGates, -noise, kEchoSnrDb};
    }
    return {NoiseEvidence::kLowerEnvelope, -quantile(envelopes, 0.1), 0};
}

}  // namespace scan
