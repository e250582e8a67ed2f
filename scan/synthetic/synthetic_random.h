/*
 * synthetic_random.h - random numbers that are the same on every machine and with every compiler.
 *
 * The standard library's distributions are not: each implementation is free to draw differently.
 */
#ifndef SCAN_SYNTHETIC_SYNTHETIC_RANDOM_H
#define SCAN_SYNTHETIC_SYNTHETIC_RANDOM_H

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>

#include "scan/angles.h"

namespace scan {

/* The finaliser of splitmix64: a good hash of 64 bits. */
inline std::uint64_t mixBits(std::uint64_t x) {
    x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9u;
    x = (x ^ (x >> 27)) * 0x94d049bb133111ebu;
    return x ^ (x >> 31);
}

/* splitmix64: a counter through a hash, 2^64 values, any seed is good. */
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(mixBits(seed + 0x9e3779b97f4a7c15u)) {}

    std::uint64_t bits() { return mixBits(state_ += 0x9e3779b97f4a7c15u); }

    /* In (0, 1): never an end, so its logarithm is finite. */
    double uniform() { return (static_cast<double>(bits() >> 12) + 0.5) * 0x1p-52; }
    double uniform(double low, double high) { return low + (high - low) * uniform(); }

    /* Complex normal of mean 0 and mean square 1 (Box-Muller). */
    std::complex<double> complexNormal() {
        const double amplitude = std::sqrt(-std::log(uniform()));
        return std::polar(amplitude, kTwoPi * uniform());
    }

    double normal() { return std::numbers::sqrt2 * complexNormal().real(); }

    /* Gamma variate of whole shape and mean `shape`: the sum of `shape` unit exponentials. Up to 16
     * uniforms of 52 bits can be multiplied without underflow. */
    double gamma(int shape) {
        double product = 1.0;
        for (int i = 0; i < shape; ++i) {
            product *= uniform();
        }
        return -std::log(product);
    }

  private:
    std::uint64_t state_;
};

/* Smooth random pattern of about mean 0 and variance 1: several octaves of values on a lattice,
 * interpolated with a smooth step, each octave half as wide and `roughness` times as high. */
class SmoothPattern {
  public:
    SmoothPattern(std::uint64_t seed, double sizeKm, int octaves, double roughness)
        : seed_(mixBits(seed)), sizeKm_(sizeKm), octaves_(octaves), roughness_(roughness) {}

    [[nodiscard]] double at(double xKm, double yKm) const {
        double sum = 0.0, variance = 0.0, height = 1.0, frequency = 1.0 / sizeKm_;
        for (int octave = 0; octave < octaves_; ++octave) {
            sum += height * lattice(xKm * frequency, yKm * frequency, octave);
            variance += height * height;
            height *= roughness_;
            frequency *= 2.0;
        }
        /* 0.43: standard deviation of the interpolated uniform values, averaged over a cell. */
        return sum / (0.43 * std::sqrt(variance));
    }

  private:
    [[nodiscard]] double corner(std::int64_t i, std::int64_t j, int octave) const {
        const auto key = static_cast<std::uint64_t>(i) * 0x9e3779b97f4a7c15u +
                         static_cast<std::uint64_t>(j) * 0xc2b2ae3d27d4eb4fu +
                         static_cast<std::uint64_t>(octave);
        return static_cast<double>(mixBits(key ^ seed_) >> 11) * 0x1p-52 - 1.0;
    }

    [[nodiscard]] double lattice(double x, double y, int octave) const {
        const double x0 = std::floor(x), y0 = std::floor(y);
        const double u = smoothStep(x - x0), v = smoothStep(y - y0);
        const auto i = static_cast<std::int64_t>(x0), j = static_cast<std::int64_t>(y0);
        const double south = std::lerp(corner(i, j, octave), corner(i + 1, j, octave), u);
        const double north = std::lerp(corner(i, j + 1, octave), corner(i + 1, j + 1, octave), u);
        return std::lerp(south, north, v);
    }

    static double smoothStep(double t) { return t * t * (3.0 - 2.0 * t); }

    std::uint64_t seed_;
    double sizeKm_;
    int octaves_;
    double roughness_;
};

}  // namespace scan

#endif
