/*
 * synthetic_scene.cpp - weather, terrain and specks.
 *
 * The figures follow measured scans: over ground clutter the reflectivity of neighbouring gates
 * scatters by 6 to 10 dB, the differential reflectivity by 3.5 dB and the differential phase by 20
 * to 115 degrees, and the correlation lies anywhere between 0.3 and 1.
 */
#include "scan/synthetic/synthetic_scene.h"

#include <algorithm>
#include <cmath>

#include "scan/angles.h"

namespace scan {

namespace {

constexpr int kCells = 30, kTowers = 45, kSpecks = 220, kSpokes = 2;

double addPowersDb(double a, double b) {
    return 10.0 * std::log10(std::pow(10.0, 0.1 * a) + std::pow(10.0, 0.1 * b));
}

/* Correlation of echoes that are no rain: percentiles 5/50/95 are 0.29, 0.77 and 0.995. */
double drawCorrelation(Random& random) {
    return 1.0 - 0.78 * std::pow(random.uniform(), 1.75);
}

}  // namespace

Weather::Weather(std::uint64_t seed)
    : region_(seed + 1, 70.0, 3, 0.5),
      bands_(seed + 2, 16.0, 3, 0.55),
      ripple_(seed + 3, 2.0, 3, 0.6),
      microphysics_(seed + 4, 8.0, 2, 0.5) {
    Random random(seed);
    windSpeed_ = random.uniform(10.0, 14.0);
    windFromRad_ = random.uniform(0.0, kTwoPi);
    /* Two cells in three lie in a line across the scan, the others anywhere. */
    const double lineRad = random.uniform(0.0, kPi), lineKm = random.uniform(25.0, 55.0);
    for (int i = 0; i < kCells; ++i) {
        double xKm = random.uniform(-130.0, 130.0), yKm = random.uniform(-130.0, 130.0);
        if (i % 3 != 0) {
            const double along = xKm, across = lineKm + 6.0 * random.normal();
            xKm = along * std::cos(lineRad) - across * std::sin(lineRad);
            yKm = along * std::sin(lineRad) + across * std::cos(lineRad);
        }
        cells_.push_back({xKm, yKm, random.uniform(36.0, 56.0), random.uniform(1.5, 4.0),
                          random.uniform(1.0, 2.2), lineRad + 0.4 * random.normal()});
    }
}

double Weather::reflectivity(double xKm, double yKm) const {
    const double region = region_.at(xKm, yKm);
    double dBZ = 18.0 + 7.0 * region + 3.5 * bands_.at(xKm, yKm);
    if (region < 0.25) {
        dBZ += 35.0 * (region - 0.25);  // the edge of the rain area
    }
    for (const Cell& cell : cells_) {
        const double dx = xKm - cell.xKm, dy = yKm - cell.yKm;
        const double along = dx * std::cos(cell.angleRad) + dy * std::sin(cell.angleRad);
        const double across = dy * std::cos(cell.angleRad) - dx * std::sin(cell.angleRad);
        const double distance = std::hypot(along / cell.stretch, across) / cell.radiusKm;
        if (distance > 6.0) {
            continue;
        }
        /* A round top and an exponential flank. */
        dBZ = addPowersDb(dBZ, cell.peakDbz - 12.0 * (std::hypot(1.0, distance) - 1.0));
    }
    return dBZ + 1.2 * ripple_.at(xKm, yKm);
}

Echo Weather::at(double xKm, double yKm, double azimuthRad, double rangeKm) const {
    const double micro = microphysics_.at(xKm, yKm);
    const double wind = windSpeed_ + 0.08 * rangeKm + 0.8 * bands_.at(xKm, yKm);
    Echo echo;
    echo.dBZ = reflectivity(xKm, yKm);
    const double heavy = std::max(0.0, echo.dBZ - 30.0);
    echo.zdrDb = 0.15 + 0.045 * std::max(0.0, echo.dBZ - 12.0) + 0.15 * micro;
    echo.correlation = std::clamp(0.989 + 0.004 * micro - 0.0004 * heavy, 0.965, 0.998);
    echo.velocity = -wind * std::cos(azimuthRad - windFromRad_);
    echo.width = std::clamp(1.6 + 0.5 * micro + 0.03 * heavy, 0.7, 4.0);
    echo.ldrDb = -28.0 + 1.2 * micro + 0.05 * heavy;
    return echo;
}

double Weather::kdp(double dBZ) {
    /* Z = 200 R^1.6 and, at 5.6 GHz, about R = 25 KDP^0.85; hail-like peaks count as 48 dBZ. */
    const double rainMmH = std::pow(std::pow(10.0, 0.1 * std::min(dBZ, 48.0)) / 200.0, 1.0 / 1.6);
    return std::pow(rainMmH / 25.0, 1.0 / 0.85);
}

Clutter::Clutter(std::uint64_t seed, int nrays, int ngates, double spacingKm)
    : nrays_(nrays),
      ngates_(ngates),
      terrain_(seed + 11, 8.0, 4, 0.5),
      phase_(seed + 12, 3.0, 2, 0.6),
      offset_(seed + 13, 2.0, 2, 0.7),
      targetAt_(static_cast<std::size_t>(nrays) * ngates, 0) {
    Random random(seed);
    const auto anyRay = [&] { return static_cast<int>(random.uniform() * nrays); };
    const auto upTo = [&](int most) { return 1 + static_cast<int>(random.uniform() * most); };
    for (int i = 0; i < kSpokes; ++i) {
        const int from = static_cast<int>(random.uniform(0.1, 0.5) * ngates);
        const Target spoke{Kind::kInterference, random.uniform(11.0, 15.0), 0.0};
        place(spoke, anyRay(), from, 1, static_cast<int>(random.uniform(0.2, 0.4) * ngates));
    }
    for (int i = 0; i < kSpecks; ++i) {
        const Target speck{Kind::kSpeck, random.uniform(12.0, 34.0), random.uniform(-40.0, 40.0)};
        const int gate = static_cast<int>(random.uniform() * ngates);
        const int ray = anyRay(), rays = upTo(2);
        place(speck, ray, gate, rays, upTo(4));
    }
    for (int i = 0; i < kTowers; ++i) {
        const Target tower{Kind::kTower, random.uniform(42.0, 62.0), 0.0};
        const int gate = static_cast<int>(random.uniform(2.0, 80.0) / spacingKm);
        const int ray = anyRay(), rays = upTo(3);
        place(tower, ray, gate, rays, upTo(3));
    }
}

void Clutter::place(const Target& target, int ray, int gate, int rays, int gates) {
    targets_.push_back(target);
    for (int r = ray; r < ray + rays; ++r) {
        for (int g = gate; g < std::min(gate + gates, ngates_); ++g) {
            const std::size_t at = static_cast<std::size_t>(r % nrays_) * ngates_ + g;
            targetAt_[at] = static_cast<std::uint16_t>(targets_.size());
        }
    }
}

/* Above 0 the beam meets the ground: often near the radar, seldom beyond 60 km. */
double Clutter::terrain(double xKm, double yKm, double rangeKm) const {
    return terrain_.at(xKm, yKm) - 0.5 - rangeKm / 36.0 + 0.9 * std::exp(-rangeKm / 4.0);
}

double Clutter::mapped(double xKm, double yKm, double rangeKm) const {
    /* The map is a little out of place, and coarser than the terrain. */
    const double excess = terrain(xKm + 0.25, yKm - 0.15, rangeKm);
    return 0.15 + 0.65 / (1.0 + std::exp(-5.0 * excess));
}

Echo Clutter::drawTerrain(double excess, double xKm, double yKm, Random& random) const {
    const double phaseScatter = std::clamp(75.0 + 35.0 * phase_.at(xKm, yKm), 12.0, 130.0);
    Echo echo;
    echo.dBZ = 35.0 + 12.0 * excess + 8.5 * random.normal();
    echo.zdrDb = 0.5 + 3.8 * random.normal();
    echo.phaseDeg = 80.0 * offset_.at(xKm, yKm) + phaseScatter * random.normal();
    echo.correlation = drawCorrelation(random);
    echo.velocity = 0.2 * random.normal();
    echo.width = 0.25 + 0.1 * std::abs(random.normal());
    echo.ldrDb = -12.0 + 4.0 * random.normal();
    return echo;
}

Echo Clutter::drawTarget(const Target& target, double rangeKm, Random& random) const {
    const bool tower = target.kind == Kind::kTower;
    const bool spoke = target.kind == Kind::kInterference;
    const double noiseDbz = kNoiseDbzAt1Km + 20.0 * std::log10(rangeKm);
    Echo echo;
    echo.dBZ = (tower ? 0.0 : noiseDbz) + target.excessDb + (spoke ? 1.0 : 4.0) * random.normal();
    echo.zdrDb = (tower ? 0.5 : 1.5) + (spoke ? 0.5 : 3.0) * random.normal();
    echo.phaseDeg = random.uniform(-180.0, 180.0);
    echo.correlation = spoke ? 0.1 : drawCorrelation(random);
    echo.velocity = tower ? 0.1 * random.normal() : target.velocity + 0.5 * random.normal();
    if (spoke) {
        echo.velocity = random.uniform(-40.0, 40.0);
    }
    echo.width = tower ? 0.2 : random.uniform(0.4, 2.5);
    echo.ldrDb = -12.0 + 4.0 * random.normal();
    return echo;
}

Echo Clutter::draw(int ray, int gate, double xKm, double yKm, double rangeKm,
                   Random& random) const {
    const int target = targetAt_[static_cast<std::size_t>(ray) * ngates_ + gate];
    if (target != 0) {
        return drawTarget(targets_[target - 1], rangeKm, random);
    }
    const double excess = terrain(xKm, yKm, rangeKm) + 0.12 * random.normal();
    return excess > 0.0 ? drawTerrain(excess, xKm, yKm, random) : Echo{};
}

}  // namespace scan
