/* gate.cpp - finds the ray by its angle and the gate by its range. */
#include "commands/explain/gate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "scan/quantile.h"

namespace cli {

namespace {

constexpr double kMinReachDeg = 1;
constexpr double kMetresPerKm = 1000;

/* Around the circle, 0 to 180. */
double distanceDeg(double a, double b) {
    return std::abs(std::remainder(a - b, 360.0));
}

int nearestRay(const std::vector<double>& anglesDeg, double angleDeg) {
    const auto nearer = [&](double a, double b) {
        return distanceDeg(a, angleDeg) < distanceDeg(b, angleDeg);
    };
    return static_cast<int>(std::min_element(anglesDeg.begin(), anglesDeg.end(), nearer) -
                            anglesDeg.begin());
}

/* How far a ray reaches to its sides: the median distance between neighbours. */
double reachDeg(const std::vector<double>& anglesDeg) {
    std::vector<double> steps = {kMinReachDeg};
    for (std::size_t i = 1; i < anglesDeg.size(); ++i) {
        steps.push_back(distanceDeg(anglesDeg[i], anglesDeg[i - 1]));
    }
    return std::max(kMinReachDeg, scan::upperMedian(std::move(steps)));
}

int gatesOf(const scan::Sweep& sweep, int ray) {
    return sweep.rayGates.empty() ? sweep.ngates : sweep.rayGates[static_cast<std::size_t>(ray)];
}

}  // namespace

Gate gateAt(const scan::Sweep& sweep, double angleDeg, double rangeKm) {
    const std::vector<double>& angles = sweep.rhi ? sweep.elevationDeg : sweep.azimuthDeg;
    if (angles.empty() || !(sweep.gateSpacingM > 0)) {
        throw std::runtime_error("the sweep has no rays, or no gate spacing");
    }
    Gate gate;
    gate.ray = nearestRay(angles, angleDeg);
    const auto ray = static_cast<std::size_t>(gate.ray);
    if (!(distanceDeg(angles[ray], angleDeg) <= reachDeg(angles))) {
        throw std::runtime_error("no ray is near " + std::to_string(angleDeg) + " degrees");
    }
    const double number =
        std::round((kMetresPerKm * rangeKm - sweep.firstGateM) / sweep.gateSpacingM);
    if (!(number >= 0 && number < gatesOf(sweep, gate.ray))) {
        throw std::runtime_error("no gate of that ray is at " + std::to_string(rangeKm) + " km");
    }
    gate.number = static_cast<int>(number);
    gate.azimuthDeg = sweep.azimuthDeg.at(ray);
    gate.elevationDeg = sweep.elevationDeg.at(ray);
    gate.rangeKm = (sweep.firstGateM + number * sweep.gateSpacingM) / kMetresPerKm;
    return gate;
}

}  // namespace cli
