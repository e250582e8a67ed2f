/*
 * Calibration of differential reflectivity: statistics of vertical and of low scans, samples for
 * the study of its variation with azimuth, and the offset that is applied.
 */
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "base/constants.h"
#include "base/message.h"
#include "base/number.h"
#include "clutterclassifier/Crres.h"
#include "corrections/beam.h"
#include "model/field_access.h"

using namespace clutter;
using clutter::model::cells;
using clutter::model::elevationOf;
using clutter::model::forEachRay;
using clutter::model::holdAll;

namespace {

constexpr int kStatistics = 7;
constexpr float kNoResult = -99.0f;
constexpr long long kTooFewGates = 100;
constexpr float kMinVerticalDeg = 88.0f;
constexpr float kMaxVerticalDeg = 92.0f;
constexpr float kSampleCorrelation = 0.95f;

float elevationDeg(const Cpluvek& scan) {
    return elevationOf(scan) * 180.0f / base::kFloatPi;
}

struct GateBounds {
    int first;
    int end;
};

/* Whole gates between two ranges. */
GateBounds gatesBetween(const Cpluvek& scan, float r0, float r1) {
    const auto gate = [&scan](float range) {
        return base::truncateToInt(static_cast<double>(range / scan.gatesize));
    };
    return {gate(r0), gate(r1)};
}

bool insideRay(GateBounds gates, int ngates) {
    return gates.first >= 0 && gates.first < gates.end && gates.end < ngates;
}

double linear(float decibels) {
    return std::pow(10.0, 0.1 * static_cast<double>(decibels));
}

/* Means over chosen gates: of powers in double precision, of other fields in single. */
class Statistics {
  public:
    void add(const Crres& context, std::size_t i) {
        zhh_ += linear(context.zhh.data[i]);
        zdr_ += linear(context.zdr.data[i]);
        pdp_ += context.pdp.data[i];
        rhv_ += context.rhv.data[i];
        vel_ += context.vel.data[i];
        wid_ += context.wid.data[i];
        ++count_;
    }

    void store(float* stats) const {
        if (count_ <= kTooFewGates) {
            return;
        }
        const double n = static_cast<double>(count_);
        stats[1] = static_cast<float>(10.0 * std::log10(zhh_ / n));
        stats[2] = static_cast<float>(10.0 * std::log10(zdr_ / n));
        const float divisor = static_cast<float>(count_);
        stats[3] = pdp_ / divisor;
        stats[4] = rhv_ / divisor;
        stats[5] = vel_ / divisor;
        stats[6] = wid_ / divisor;
    }

  private:
    double zhh_ = 1.0, zdr_ = 1.0;  // start from 1, as calibration tools expect
    float pdp_ = 0.0f, rhv_ = 0.0f, vel_ = 0.0f, wid_ = 0.0f;
    long long count_ = 0;
};

/* Averages the gates of a range in all rays that chosen(i) admits. */
template <class Chosen>
void average(const Crres& context, GateBounds gates, float* stats, Chosen chosen) {
    if (!insideRay(gates, context.zhh.ngates)) {
        return;
    }
    Statistics statistics;
    forEachRay(context.zhh, [&](std::ptrdiff_t at, int) {
        for (int g = gates.first; g < gates.end; ++g) {
            const std::size_t i = static_cast<std::size_t>(at + g);
            if (chosen(i)) {
                statistics.add(context, i);
            }
        }
    });
    statistics.store(stats);
}

bool hasStatistics(const Crres& c) {
    return holdAll({&c.zhh, &c.zdr, &c.rhv, &c.pdp, &c.vel, &c.wid}, cells(c.zhh));
}

}  // namespace

void Crres::CalculateOffsetsAt90Deg(float* stats, float r0, float r1, float rhoMin, float zMin) {
    if (stats == nullptr) {
        return;
    }
    std::fill_n(stats, kStatistics, kNoResult);
    if (!hasStatistics(*this)) {
        return;
    }
    stats[0] = elevationDeg(zhh);
    if (stats[0] < kMinVerticalDeg || stats[0] > kMaxVerticalDeg) {
        base::report("Please select a 90-degree scan (%2.2f)!\n", static_cast<double>(stats[0]));
        return;
    }
    average(*this, gatesBetween(zhh, r0, r1), stats,
            [&](std::size_t i) { return rhv.data[i] >= rhoMin && zhh.data[i] >= zMin; });
}

void Crres::CalculateOffsetsAtLowElevations(float* stats, float r0, float r1, float rhoMin,
                                            float zMin, float zMax) {
    if (stats == nullptr) {
        return;
    }
    std::fill_n(stats, kStatistics, kNoResult);
    if (!hasStatistics(*this) || !holdAll({&ccl}, cells(zhh))) {
        return;
    }
    stats[0] = elevationDeg(zhh);
    average(*this, gatesBetween(zhh, r0, r1), stats, [&](std::size_t i) {
        return ccl.data[i] == 0.0f && rhv.data[i] >= rhoMin && zMin <= zhh.data[i] &&
               zhh.data[i] <= zMax;
    });
}

void Crres::ExtractZdrDataToCalculateAzimuthVariation(char* prefix, float height, float zMin,
                                                      float zMax) {
    const std::size_t n = cells(zhh);
    if (prefix == nullptr || !holdAll({&zhh, &zdr, &ccl, &rhv}, n)) {
        return;
    }
    const double range =
        corrections::beamRange(static_cast<double>(height), static_cast<double>(elevationOf(zhh)));
    const int gates = std::max(base::truncateToInt(range / static_cast<double>(zhh.gatesize)), 0);
    for (int r = 0; r < zhh.nrays; ++r) {
        // Not limited to the ray: past its end, the gates of the next rays follow.
        const std::size_t first = base::cellCount(zhh.ngates, r);
        const std::size_t end = std::min(first + static_cast<std::size_t>(gates), n);
        std::vector<float> samples;
        for (std::size_t i = first; i < end; ++i) {
            if (zMin <= zhh.data[i] && zhh.data[i] <= zMax && ccl.data[i] == 0.0f &&
                rhv.data[i] >= kSampleCorrelation) {
                samples.push_back(zdr.data[i]);
            }
        }
        if (samples.empty()) {
            continue;
        }
        char suffix[64];
        std::snprintf(suffix, sizeof suffix, "_%.4d%.2d_AZ_%.3d.dat", zhh.year, zhh.month, r);
        std::string path = std::string(prefix) + suffix;
        dsp.SaveArrayOnFile(samples.data(), static_cast<int>(samples.size()), path.data());
    }
}

void Crres::CalibrateZdrOffsetandAzimuthVariation() {
    if (zdr.data == nullptr) {
        return;
    }
    const std::size_t n = cells(zdr);
    for (std::size_t i = 0; i < n; ++i) {
        zdr.data[i] += zdrbias;
    }
}
