/*
 * synthetic.cpp - the radar's estimates at every gate of the synthetic scene.
 *
 * The two channels of a gate receive complex normal samples whose covariance is the sum of the
 * echoes' covariances and of the noise. The sample covariance of n such samples has a Wishart
 * distribution, which is drawn by its triangular factor (Bartlett): two gamma variates and one
 * complex normal a gate, instead of 2 n complex samples. Velocity and width come from the
 * correlation of successive samples in the same way, so velocities fold by themselves.
 */
#include "scan/synthetic/synthetic.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <stdexcept>

#include "scan/angles.h"
#include "scan/synthetic/synthetic_scene.h"

namespace scan {

namespace {

using Complex = std::complex<double>;

constexpr int kSamples = 16;  // independent samples a ray: rain then scatters by 1.1 dB, 1.4 deg
/* The beam moves on while a ray is sampled, and the receiver's filter is not a box. */
constexpr double kLeakDb = -10.0;
constexpr double kSystemPhaseDeg = 40.0;
constexpr double kSpacingM = 150.0, kNyquist = 16.0, kElevationDeg = 0.5, kMinSnrDb = 10.0;

double fromDb(double dB) {
    return std::pow(10.0, 0.1 * dB);
}
double toDb(double power) {
    return 10.0 * std::log10(power);
}

/* Expected powers and correlations of all that is at one gate; powers in mm6/m3. */
struct Moments {
    double h = 0.0, v = 0.0, cross = 0.0;
    Complex hv = 0.0, lag1 = 0.0;

    void add(const Echo& echo, double propagationDeg) {
        const double power = fromDb(echo.dBZ), vertical = power / fromDb(echo.zdrDb);
        const double spread = kPi * echo.width / kNyquist;
        h += power;
        v += vertical;
        cross += power * fromDb(echo.ldrDb);
        hv += std::polar(echo.correlation * std::sqrt(power * vertical),
                         (echo.phaseDeg + propagationDeg) * kRadiansPerDegree);
        lag1 +=
            std::polar(power * std::exp(-0.5 * spread * spread), kPi * echo.velocity / kNyquist);
    }

    void addNoise(double noise) {
        h += noise;
        v += noise;
        cross += noise;
    }
};

/* Sample covariance of kSamples draws of the two channels. */
struct Estimate {
    double h, v;
    Complex hv;
};

Estimate drawEstimate(const Moments& m, Random& random) {
    /* Factor of the covariance: h = a a, hv = a conj(b), v = b b + c c. */
    const double a = std::sqrt(m.h);
    const Complex b = std::conj(m.hv) / a;
    const double c = std::sqrt(std::max(0.0, m.v - std::norm(b)));
    /* Factor of the Wishart matrix of unit covariance. */
    const double p = std::sqrt(random.gamma(kSamples) / kSamples);
    const double q = std::sqrt(random.gamma(kSamples - 1) / kSamples);
    const Complex r = random.complexNormal() / std::sqrt(static_cast<double>(kSamples));
    const Complex vFromH = b * p + c * r;
    return {a * a * p * p, std::norm(vFromH) + c * c * q * q, a * p * std::conj(vFromH)};
}

void writeCovariance(const Moments& m, std::size_t i, SyntheticScan& scan, Random& random) {
    const Estimate estimate = drawEstimate(m, random);
    scan.zhh[i] = toDb(estimate.h);
    scan.zdr[i] = toDb(estimate.h / estimate.v);
    scan.phidp[i] = std::arg(estimate.hv) / kRadiansPerDegree;
    scan.rhohv[i] = std::min(1.0, std::abs(estimate.hv) / std::sqrt(estimate.h * estimate.v));
}

/* Successive samples of one channel have the covariance of two channels of equal power. */
void writeDoppler(const Moments& m, std::size_t i, SyntheticScan& scan, Random& random) {
    const Estimate estimate = drawEstimate({m.h, m.h, 0.0, m.lag1, 0.0}, random);
    const double coherence = std::abs(estimate.hv) / std::sqrt(estimate.h * estimate.v);
    scan.velocity[i] = std::arg(estimate.hv) * kNyquist / kPi;
    scan.width[i] = std::sqrt(-2.0 * std::log(std::clamp(coherence, 1e-6, 1.0))) * kNyquist / kPi;
}

/* The noise of the cross-polar channel is known and taken off, as receivers do. */
void writeDepolarisation(const Moments& m, double noise, std::size_t i, SyntheticScan& scan,
                         Random& random) {
    const double echo = m.cross * random.gamma(kSamples) / kSamples - noise;
    const bool seen = echo > 0.5 * noise;
    scan.ldr[i] = seen ? toDb(echo / m.h) : std::numeric_limits<double>::quiet_NaN();
}

constexpr float kRainWins = 0.0f, kNoiseWins = 3.0f, kClutterWins = 5.0f;

float judge(double rain, double clutter, double noise) {
    if (toDb((rain + clutter) / noise) < kMinSnrDb) {
        return kNoiseWins;
    }
    return clutter > rain ? kClutterWins : kRainWins;
}

SyntheticScan emptyScan(int nrays, int ngates) {
    SyntheticScan scan;
    scan.nrays = nrays;
    scan.ngates = ngates;
    scan.gateSpacingM = kSpacingM;
    scan.nyquist = kNyquist;
    scan.elevationDeg = kElevationDeg;
    scan.radarConstantDb = -kNoiseDbzAt1Km;
    scan.minSnrDb = kMinSnrDb;
    for (int g = 0; g < ngates; ++g) {
        scan.rangeM.push_back(g * kSpacingM);
    }
    for (int r = 0; r < nrays; ++r) {
        scan.azimuthDeg.push_back((r + 0.5) * 360.0 / nrays);
    }
    const std::size_t n = static_cast<std::size_t>(nrays) * ngates;
    for (auto* field : {&scan.zhh, &scan.zdr, &scan.phidp, &scan.rhohv, &scan.velocity, &scan.width,
                        &scan.ldr, &scan.likelihood}) {
        field->resize(n);
    }
    scan.truth.resize(n);
    return scan;
}

struct Place {
    double rangeKm, azimuthRad;
    [[nodiscard]] double xKm() const { return rangeKm * std::sin(azimuthRad); }
    [[nodiscard]] double yKm() const { return rangeKm * std::cos(azimuthRad); }
};

Place placeOf(const SyntheticScan& scan, int ray, int gate) {
    /* The first gate is one spacing out, as in the library. */
    return {std::max(gate, 1) * kSpacingM / 1000.0, scan.azimuthDeg[ray] * kRadiansPerDegree};
}

Random randomOf(std::uint64_t seed, int stream, int ray) {
    return Random(mixBits(mixBits(seed) + stream) + static_cast<std::uint64_t>(ray));
}

std::vector<Echo> drawGround(const SyntheticScan& scan, const Clutter& clutter,
                             std::uint64_t seed) {
    std::vector<Echo> ground;
    ground.reserve(scan.truth.size());
    for (int ray = 0; ray < scan.nrays; ++ray) {
        Random random = randomOf(seed, 3, ray);
        for (int gate = 0; gate < scan.ngates; ++gate) {
            const Place place = placeOf(scan, ray, gate);
            ground.push_back(
                clutter.draw(ray, gate, place.xKm(), place.yKm(), place.rangeKm, random));
        }
    }
    return ground;
}

/* A gate's own ground echo and what leaks in from its four neighbours. */
Moments groundMoments(const SyntheticScan& scan, const std::vector<Echo>& ground, int ray, int gate,
                      double propagationDeg) {
    Moments moments;
    const auto add = [&](int r, int g, double leakDb) {
        if (g < 0 || g >= scan.ngates) {
            return;
        }
        const int wrapped = (r + scan.nrays) % scan.nrays;
        Echo echo = ground[static_cast<std::size_t>(wrapped) * scan.ngates + g];
        if (echo.dBZ <= Echo{}.dBZ) {
            return;
        }
        echo.dBZ += leakDb;
        moments.add(echo, propagationDeg);
    };
    add(ray, gate, 0.0);
    for (const int step : {-1, 1}) {
        add(ray + step, gate, kLeakDb);
        add(ray, gate + step, kLeakDb);
    }
    return moments;
}

void fillRay(SyntheticScan& scan, int ray, const Weather& weather, const Clutter& clutter,
             const std::vector<Echo>& ground, Random random) {
    double propagationDeg = kSystemPhaseDeg;
    for (int gate = 0; gate < scan.ngates; ++gate) {
        const std::size_t i = static_cast<std::size_t>(ray) * scan.ngates + gate;
        const Place place = placeOf(scan, ray, gate);
        const double noise = fromDb(kNoiseDbzAt1Km) * place.rangeKm * place.rangeKm;
        const Echo rain = weather.at(place.xKm(), place.yKm(), place.azimuthRad, place.rangeKm);
        Moments moments = groundMoments(scan, ground, ray, gate, propagationDeg);
        scan.truth[i] = judge(fromDb(rain.dBZ), moments.h, noise);
        moments.add(rain, propagationDeg);
        moments.addNoise(noise);
        writeCovariance(moments, i, scan, random);
        writeDoppler(moments, i, scan, random);
        writeDepolarisation(moments, noise, i, scan, random);
        const double mapped = clutter.mapped(place.xKm(), place.yKm(), place.rangeKm);
        scan.likelihood[i] = std::clamp(mapped + 0.12 * random.normal(), 0.02, 0.98);
        propagationDeg += 2.0 * Weather::kdp(rain.dBZ) * kSpacingM / 1000.0;
    }
}

}  // namespace

SyntheticScan makeSyntheticScan(std::uint64_t seed, int nrays, int ngates) {
    if (nrays < 1 || ngates < 1) {
        throw std::invalid_argument("a scan needs at least one ray and one gate");
    }
    SyntheticScan scan = emptyScan(nrays, ngates);
    const Weather weather(mixBits(seed) + 1);
    const Clutter clutter(mixBits(seed) + 2, nrays, ngates, kSpacingM / 1000.0);
    const std::vector<Echo> ground = drawGround(scan, clutter, seed);
    for (int ray = 0; ray < nrays; ++ray) {
        fillRay(scan, ray, weather, clutter, ground, randomOf(seed, 4, ray));
    }
    return scan;
}

}  // namespace scan
