/* labels.cpp - a brush on polar gates. */
#include "labels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

#include "clutterclassifier/classifier.h"

namespace studio {

void paintDisc(const scan::Sweep& sweep, double xKm, double yKm, double radiusKm, scan::Label label,
               std::vector<scan::Label>& labels) {
    constexpr double kMetresPerKm = 1000;
    const double spacing = sweep.gateSpacingM / kMetresPerKm;
    if (!(spacing > 0)) {
        return;
    }
    const std::vector<double>& angles = sweep.rhi ? sweep.elevationDeg : sweep.azimuthDeg;
    for (std::size_t ray = 0; ray < angles.size(); ++ray) {
        const double angle = angles[ray] * std::numbers::pi / 180;
        /* Azimuths turn from north to east, elevations from the ground up. */
        const double east = sweep.rhi ? std::cos(angle) : std::sin(angle);
        const double north = sweep.rhi ? std::sin(angle) : std::cos(angle);
        const double along = xKm * east + yKm * north, across = xKm * north - yKm * east;
        const double half = std::sqrt(radiusKm * radiusKm - across * across);
        if (!(along + half > 0)) {
            continue;  // beside the disc (NaN), or behind the radar
        }
        const double first = (along - half - sweep.firstGateM / kMetresPerKm) / spacing;
        const double last = (along + half - sweep.firstGateM / kMetresPerKm) / spacing;
        const auto from = static_cast<int>(std::max(0.0, std::ceil(first)));
        const auto to = static_cast<int>(std::min<double>(sweep.ngates - 1, std::floor(last)));
        const std::size_t begin = ray * static_cast<std::size_t>(sweep.ngates);
        for (int gate = from; gate <= to; ++gate) {
            labels[begin + static_cast<std::size_t>(gate)] = label;
        }
    }
}

std::vector<float> codesOf(const std::vector<scan::Label>& labels) {
    std::vector<float> codes(labels.size(), std::numeric_limits<float>::quiet_NaN());
    for (std::size_t i = 0; i < labels.size(); ++i) {
        if (labels[i] == scan::Label::kWeather || labels[i] == scan::Label::kBeside) {
            codes[i] = CLUTTER_PRECIPITATION;
        } else if (labels[i] == scan::Label::kClutter) {
            codes[i] = CLUTTER_GROUND;
        }
    }
    return codes;
}

}  // namespace studio
