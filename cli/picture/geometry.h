/* geometry.h - which gate is at a point of the picture. */
#ifndef CLI_PICTURE_GEOMETRY_H
#define CLI_PICTURE_GEOMETRY_H

#include <cstddef>
#include <vector>

#include "scan/scan.h"

namespace cli {

/* What the axes span. Plan position: km east and north of the radar. Range-height: km along the
 * ground and km above the radar. */
struct View {
    bool rhi = false;
    double maxRangeKm = 0;
    double left = 0, right = 0, bottom = 0, top = 0;
};

/* The view of a range-height sweep: as high as its beams reach, 20 km at most. */
View rangeHeightView(const scan::Sweep& sweep, double maxRangeKm);

/* Height of the beam above the radar, over an Earth of 4/3 radius. */
double beamHeightKm(double rangeKm, double elevationRad);

/* The range at the end of the last gate. */
double sweepRangeKm(const scan::Sweep& sweep);

/*
 * Finds the gate at a point. A ray reaches halfway to its neighbours, but beside a gap at most
 * three quarters of the usual step, so that missing rays are visible. Plan positions use
 * slant range; heights follow the beam over an Earth of 4/3 radius.
 */
class GateFinder {
  public:
    GateFinder(const scan::Sweep& sweep, const View& view, double beamWidthDeg);

    /* Index into the values of a field, or -1. */
    [[nodiscard]] std::ptrdiff_t find(double xKm, double yKm) const;

    /* find() of n points of one row, at leftKm + (i + 0.5) * stepKm. Angles and ranges are computed
     * roughly, those of points near the edge of a gate also exactly. */
    void findRow(double leftKm, double stepKm, int n, double yKm, std::ptrdiff_t* gates) const;

  private:
    static constexpr int kBlock = 256;

    void findQuickly(double leftKm, double stepKm, int first, int n, double yKm,
                     std::ptrdiff_t* gates) const;
    void spreadRays(const std::vector<double>& angleDeg, double beamWidthDeg);

    std::vector<int> rayAt_;  // by angle, in equal steps around the circle; -1: no ray
    bool rhi_;
    double maxRangeKm_, firstGateKm_, spacingKm_;
    int ngates_;
};

}  // namespace cli

#endif
