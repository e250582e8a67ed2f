#include "scan/noise/rings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "scan/fields/value_summary.h"
#include "scan/quantile.h"
#include "scan/scan.h"

namespace scan {
namespace {

constexpr int kMaxRings = 32;  // blocks of gates, each with a histogram of its own
constexpr int kMinRings = 8;
constexpr int kNearShare = 8;       // the nearest eighth is full of clutter and side lobes
constexpr double kBinDb = 0.5;      // of the histogram of a ring
constexpr double kLowestDb = -120;  // of the histogram; wider than any radar
constexpr int kBins = 480;          // to +120 dB
constexpr int kSmoothBins = 3;      // to each side: quantised values leave gaps
constexpr double kHighPeak = 0.5;   // of the highest: a lower peak that counts as well
constexpr double kMedianShare = 0.5;
constexpr double kWeakShare = 0.1;       // of a ring's values are its weak ones
constexpr double kEnvelopeShare = 0.01;  // of a ring's values lie below its envelope
constexpr double kMarkerShare = 0.02;    // of all gates at the lowest value: a marker

using Values = std::vector<double>;

/* The lowest value, if too many gates share it for a measurement. */
float noEchoMarker(const std::vector<float>& values) {
    const ValueSummary summary = summarise(values, Role::kNone);
    const auto sharing = std::count(values.begin(), values.end(), summary.lowest);
    const bool marker =
        static_cast<double>(sharing) > kMarkerShare * static_cast<double>(summary.count);
    return marker ? summary.lowest : kNoValue;
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

/* Whether a ray was measured at all: blanked sectors hold nothing. */
std::vector<std::uint8_t> measuredRays(const std::vector<float>& reflectivity, int nrays) {
    std::vector<std::uint8_t> measured;
    const auto ngates = static_cast<std::ptrdiff_t>(reflectivity.size()) / std::max(nrays, 1);
    for (auto ray = reflectivity.begin(); ngates > 0 && ray != reflectivity.end(); ray += ngates) {
        measured.push_back(
            std::any_of(ray, ray + ngates, [](float value) { return std::isfinite(value); }));
    }
    return measured;
}

/* The gates of the measured rays from first to last - 1. */
std::size_t countGates(const NoiseInput& sweep, const std::vector<std::uint8_t>& measured,
                       int first, int last) {
    std::size_t count = 0;
    for (std::size_t r = 0; r < measured.size(); ++r) {
        const int end = sweep.rayGates ? std::min(last, (*sweep.rayGates)[r]) : last;
        count += measured[r] ? static_cast<std::size_t>(std::max(0, end - first)) : 0;
    }
    return count;
}

/* Fills one ring from the gates first to last - 1 of all rays; reflectivity is the sweep's without
 * markers of no echo. */
Ring collectRing(const NoiseInput& sweep, const std::vector<float>& reflectivity, int first,
                 int last) {
    const int ngates = sweep.ngates;
    Ring ring;
    ring.spreadingDb = spreadingDb(0.5 * (first + last), sweep.gateSpacingM);
    Values spreading;
    for (int g = first; g < last; ++g) {
        spreading.push_back(spreadingDb(g, sweep.gateSpacingM));
    }
    const std::size_t most = spreading.size() * static_cast<std::size_t>(sweep.nrays);
    ring.levels.resize(most);
    ring.correlation.resize(sweep.correlation ? most : 0);
    std::size_t count = 0;
    for (int r = 0; r < sweep.nrays; ++r) {
        for (int g = first; g < last; ++g) {
            const std::size_t at = static_cast<std::size_t>(r) * static_cast<std::size_t>(ngates) +
                                   static_cast<std::size_t>(g);
            ring.levels[count] = reflectivity[at] - spreading[static_cast<std::size_t>(g - first)];
            if (sweep.correlation) {
                ring.correlation[count] = (*sweep.correlation)[at];
            }
            count += std::isfinite(reflectivity[at]) ? 1 : 0;  // else the next one takes its place
        }
    }
    ring.levels.resize(count);
    ring.correlation.resize(sweep.correlation ? count : 0);
    return ring;
}

/* The values without those that stand for "no echo". */
std::vector<float> withoutMarkers(std::vector<float> reflectivity) {
    const float marker = noEchoMarker(reflectivity);
    std::replace_if(
        reflectivity.begin(), reflectivity.end(),
        [marker](float value) { return value == marker || value == kNoRainDbz; }, kNoValue);
    return reflectivity;
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

}  // namespace

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

double quantile(Values values, double share) {
    return valueOfRank(values, rankOfShare(share, values.size()));
}

/* Few rings for a small scan, so that each holds enough values. */
std::vector<Ring> collectRings(const NoiseInput& sweep) {
    const std::vector<float> reflectivity = withoutMarkers(sweep.reflectivity);
    const auto present = std::count_if(reflectivity.begin(), reflectivity.end(),
                                       [](float value) { return std::isfinite(value); });
    const int count = static_cast<int>(
        std::clamp<long>(present / (2 * static_cast<long>(kMinRingValues)), kMinRings, kMaxRings));
    const std::vector<std::uint8_t> measured = measuredRays(reflectivity, sweep.nrays);
    std::vector<Ring> rings;
    for (long i = count / kNearShare; i < count; ++i) {
        const int first = std::max(1, static_cast<int>(i * sweep.ngates / count));
        const int last = static_cast<int>((i + 1) * sweep.ngates / count);
        Ring ring = collectRing(sweep, reflectivity, first, last);
        if (ring.levels.size() >= kMinRingValues) {
            ring.filled = static_cast<double>(ring.levels.size()) /
                          static_cast<double>(countGates(sweep, measured, first, last));
            fillDistribution(ring);
            rings.push_back(std::move(ring));
        }
    }
    return rings;
}

double filledShareOutside(const NoiseInput& sweep) {
    const std::vector<float> reflectivity = withoutMarkers(sweep.reflectivity);
    const std::vector<std::uint8_t> measured = measuredRays(reflectivity, sweep.nrays);
    const int half = sweep.ngates / 2;
    const std::size_t gates = countGates(sweep, measured, half, sweep.ngates);
    std::size_t present = 0;
    for (std::size_t i = 0; i < reflectivity.size(); ++i) {
        const bool outside = static_cast<int>(i % static_cast<std::size_t>(sweep.ngates)) >= half;
        present += outside && std::isfinite(reflectivity[i]);
    }
    return gates == 0 ? 0 : static_cast<double>(present) / static_cast<double>(gates);
}

}  // namespace scan
