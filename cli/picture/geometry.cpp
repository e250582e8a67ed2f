/* geometry.cpp - from a point of the picture to its ray and gate. */
#include "picture/geometry.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "scan/angles.h"
#include "scan/quantile.h"

namespace cli {

namespace {

constexpr double kEffectiveEarthKm = 6371.0 * 4.0 / 3.0;
constexpr int kBins = 7200;  // a twentieth of a degree
constexpr double kWidestStepDeg = 12.0;
constexpr double kHighestKm = 20.0;

double onCircle(double deg) {
    const double wrapped = std::fmod(deg, 360.0);
    return wrapped < 0.0 ? wrapped + 360.0 : wrapped;
}

/* A single gate whose spacing is unknown is drawn one kilometre long. */
double spacingKm(const scan::Sweep& sweep) {
    const double km = sweep.gateSpacingM / 1000.0;
    return km > 0.0 && std::isfinite(km) ? km : 1.0;
}

double firstGateKm(const scan::Sweep& sweep) {
    return std::isfinite(sweep.firstGateM) ? sweep.firstGateM / 1000.0 : 0.0;
}

/* Median step between neighbours: a few gaps do not change it. */
double usualStep(const std::vector<double>& sorted) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        if (sorted[i] > sorted[i - 1]) {
            steps.push_back(sorted[i] - sorted[i - 1]);
        }
    }
    if (steps.empty()) {
        return 0.0;
    }
    return std::min(scan::upperMedian(std::move(steps)), kWidestStepDeg);
}

}  // namespace

double beamHeightKm(double rangeKm, double elevationRad) {
    return std::hypot(rangeKm * std::cos(elevationRad),
                      kEffectiveEarthKm + rangeKm * std::sin(elevationRad)) -
           kEffectiveEarthKm;
}

double sweepRangeKm(const scan::Sweep& sweep) {
    return std::max(firstGateKm(sweep) + (sweep.ngates - 0.5) * spacingKm(sweep),
                    0.5 * spacingKm(sweep));
}

View rangeHeightView(const scan::Sweep& sweep, double maxRangeKm) {
    View view{true, maxRangeKm, 0.0, maxRangeKm, 0.0, 1.0};
    for (const double elevation : sweep.elevationDeg) {
        if (!std::isfinite(elevation)) {
            continue;
        }
        view.top =
            std::max(view.top, beamHeightKm(maxRangeKm, elevation * scan::kRadiansPerDegree));
        if (elevation > 90.0) {
            view.left = -maxRangeKm;  // past the zenith, to the other horizon
        }
    }
    view.top = std::min(view.top, kHighestKm);
    return view;
}

GateFinder::GateFinder(const scan::Sweep& sweep, const View& view, double beamWidthDeg)
    : rayAt_(kBins, -1),
      rhi_(view.rhi),
      maxRangeKm_(view.maxRangeKm),
      firstGateKm_(firstGateKm(sweep)),
      spacingKm_(spacingKm(sweep)),
      ngates_(sweep.ngates) {
    spreadRays(view.rhi ? sweep.elevationDeg : sweep.azimuthDeg, beamWidthDeg);
}

void GateFinder::spreadRays(const std::vector<double>& angleDeg, double beamWidthDeg) {
    std::vector<int> order;
    for (std::size_t i = 0; i < angleDeg.size(); ++i) {
        if (std::isfinite(angleDeg[i])) {
            order.push_back(static_cast<int>(i));
        }
    }
    const auto angle = [&](int ray) { return onCircle(angleDeg[ray]); };
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return angle(a) < angle(b); });
    std::vector<double> sorted;
    sorted.reserve(order.size());
    for (const int ray : order) {
        sorted.push_back(angle(ray));
    }
    const double step = usualStep(sorted);
    const double beam = beamWidthDeg > 0.0 && beamWidthDeg < kWidestStepDeg ? beamWidthDeg : 1.0;
    const double widest = step > 0.0 ? 0.75 * step : 0.5 * beam;
    const std::size_t n = sorted.size();
    for (std::size_t i = 0; i < n; ++i) {
        const double before = i > 0 ? sorted[i] - sorted[i - 1] : sorted[0] + 360.0 - sorted[n - 1];
        const double after =
            i + 1 < n ? sorted[i + 1] - sorted[i] : sorted[0] + 360.0 - sorted[n - 1];
        const double bins = kBins / 360.0;
        const double from = (sorted[i] - std::min(0.5 * before, widest)) * bins;
        const double to = (sorted[i] + std::min(0.5 * after, widest)) * bins;
        /* Bins whose centre is on the ray; at least one, however narrow the ray. */
        const int first = static_cast<int>(std::floor(from + 0.5));
        const int last = std::max(first, static_cast<int>(std::floor(to + 0.5)) - 1);
        for (int bin = first; bin <= last; ++bin) {
            rayAt_[(bin + kBins) % kBins] = order[i];
        }
    }
}

std::ptrdiff_t GateFinder::find(double xKm, double yKm) const {
    double rangeKm = std::hypot(xKm, yKm), angleRad = std::atan2(xKm, yKm);
    if (rhi_) {
        const double arc = xKm / kEffectiveEarthKm, radius = kEffectiveEarthKm + yKm;
        const double ahead = radius * std::sin(arc);
        const double above = radius * std::cos(arc) - kEffectiveEarthKm;
        rangeKm = std::hypot(ahead, above);
        angleRad = std::atan2(above, ahead);
    }
    if (rangeKm > maxRangeKm_) {
        return -1;
    }
    const double bin = angleRad / scan::kTwoPi * kBins;
    const int ray = rayAt_[static_cast<int>(bin < 0.0 ? bin + kBins : bin) % kBins];
    const double gate = (rangeKm - firstGateKm_) / spacingKm_ + 0.5;
    if (ray < 0 || gate < 0.0 || gate >= ngates_) {
        return -1;
    }
    return static_cast<std::ptrdiff_t>(ray) * ngates_ + static_cast<std::ptrdiff_t>(gate);
}

namespace {

/*
 * The arc tangent of 0 <= t <= 1: above tan(pi / 8) from pi / 4 + atan((t - 1) / (t + 1)), below by
 * its series up to z^15. The first term left out is less than 2e-8, 2.1e-5 bins.
 */
double quickArcTangent(double t) {
    constexpr double kTangentOfEighth = 0.41421356237309503;
    const bool large = t > kTangentOfEighth;
    const double z = large ? (t - 1.0) / (t + 1.0) : t;
    const double z2 = z * z;
    const double series =
        1.0 +
        z2 * (-1.0 / 3 +
              z2 * (1.0 / 5 +
                    z2 * (-1.0 / 7 +
                          z2 * (1.0 / 9 + z2 * (-1.0 / 11 + z2 * (1.0 / 13 - z2 * (1.0 / 15)))))));
    return (large ? 0.25 * std::numbers::pi : 0.0) + z * series;
}

/* Whether the whole part of a number cannot be another one for the number's error. */
bool isSure(double number, double error) {
    const double fraction = number - std::floor(number);
    return fraction > error && fraction < 1.0 - error;
}

}  // namespace

void GateFinder::findQuickly(double leftKm, double stepKm, int first, int n, double yKm,
                             std::ptrdiff_t* gates) const {
    constexpr double kBinError = 1e-3;
    constexpr double kGateError = 1e-6;  // of gates below the next number
    constexpr double kMostGates = 1e8;
    double bins[kBlock];
    double places[kBlock];
    double ranges[kBlock];
    const double ay = std::abs(yKm);
    for (int i = 0; i < n; ++i) {
        const double x = leftKm + (first + i + 0.5) * stepKm;
        const double ax = std::abs(x);
        const bool steep = ax > ay;
        const double angle = quickArcTangent((steep ? ay : ax) / (steep ? ax : ay));
        const double fromAxis = steep ? 0.5 * std::numbers::pi - angle : angle;
        const double fromNorth = yKm < 0.0 ? std::numbers::pi - fromAxis : fromAxis;
        const double bin = (x < 0.0 ? -fromNorth : fromNorth) / (2.0 * std::numbers::pi) * kBins;
        bins[i] = bin < 0.0 ? bin + kBins : bin;
        ranges[i] = std::sqrt(x * x + yKm * yKm);
        places[i] = (ranges[i] - firstGateKm_) / spacingKm_ + 0.5;
    }
    for (int i = 0; i < n; ++i) {
        if (ranges[i] > maxRangeKm_ * (1.0 + kGateError)) {
            gates[i] = -1;
        } else if (ranges[i] < maxRangeKm_ * (1.0 - kGateError) && places[i] < kMostGates &&
                   isSure(places[i], kGateError) && isSure(bins[i], kBinError)) {
            const int ray = rayAt_[static_cast<int>(bins[i])];
            const bool inside = ray >= 0 && places[i] >= 0.0 && places[i] < ngates_;
            gates[i] = inside ? static_cast<std::ptrdiff_t>(ray) * ngates_ +
                                    static_cast<std::ptrdiff_t>(places[i])
                              : -1;
        } else {
            gates[i] = find(leftKm + (first + i + 0.5) * stepKm, yKm);
        }
    }
}

void GateFinder::findRow(double leftKm, double stepKm, int n, double yKm,
                         std::ptrdiff_t* gates) const {
    for (int first = 0; first < n; first += kBlock) {
        const int count = std::min(kBlock, n - first);
        if (rhi_) {
            for (int i = 0; i < count; ++i) {
                gates[first + i] = find(leftKm + (first + i + 0.5) * stepKm, yKm);
            }
        } else {
            findQuickly(leftKm, stepKm, first, count, yKm, gates + first);
        }
    }
}

}  // namespace cli
