/* synthetic_scene.h - what the synthetic radar looks at: weather, terrain and specks. */
#ifndef SCAN_SYNTHETIC_SYNTHETIC_SCENE_H
#define SCAN_SYNTHETIC_SYNTHETIC_SCENE_H

#include <cstdint>
#include <vector>

#include "scan/synthetic/synthetic_random.h"

namespace scan {

/* One kind of echo at one gate. */
struct Echo {
    double dBZ = -100.0;  // -100: none
    double zdrDb = 0.0;
    double phaseDeg = 0.0;  // of scattering; the propagation phase comes on top
    double correlation = 0.0;
    double velocity = 0.0;  // m/s, not folded
    double width = 1.0;     // m/s
    double ldrDb = -30.0;
};

/* Noise-equivalent reflectivity at 1 km. */
inline constexpr double kNoiseDbzAt1Km = -36.0;

/* Stratiform rain with convective cells in it, moved by a wind that is stronger further up. */
class Weather {
  public:
    explicit Weather(std::uint64_t seed);
    [[nodiscard]] Echo at(double xKm, double yKm, double azimuthRad, double rangeKm) const;

    /* One-way specific differential phase of rain, degrees per km. */
    static double kdp(double dBZ);

  private:
    struct Cell {
        double xKm, yKm, peakDbz, radiusKm, stretch, angleRad;
    };
    [[nodiscard]] double reflectivity(double xKm, double yKm) const;

    SmoothPattern region_, bands_, ripple_, microphysics_;
    std::vector<Cell> cells_;
    double windSpeed_, windFromRad_;
};

/* Ragged terrain near the radar, point targets, specks anywhere, and spokes of interference. */
class Clutter {
  public:
    Clutter(std::uint64_t seed, int nrays, int ngates, double spacingKm);

    /* Draws the echo of one gate: two calls for the same gate differ. */
    [[nodiscard]] Echo draw(int ray, int gate, double xKm, double yKm, double rangeKm,
                            Random& random) const;

    /* 0..1: how often a clutter map of other days shows clutter at this place. */
    [[nodiscard]] double mapped(double xKm, double yKm, double rangeKm) const;

  private:
    enum class Kind { kTower, kSpeck, kInterference };
    struct Target {
        Kind kind;
        double excessDb;  // tower: dBZ; else above the noise
        double velocity;
    };
    [[nodiscard]] double terrain(double xKm, double yKm, double rangeKm) const;
    [[nodiscard]] Echo drawTerrain(double excess, double xKm, double yKm, Random& random) const;
    [[nodiscard]] Echo drawTarget(const Target& target, double rangeKm, Random& random) const;
    void place(const Target& target, int ray, int gate, int rays, int gates);

    int nrays_, ngates_;
    SmoothPattern terrain_, phase_, offset_;
    std::vector<std::uint16_t> targetAt_;  // per gate: 0 none, else 1 + index
    std::vector<Target> targets_;
};

}  // namespace scan

#endif
