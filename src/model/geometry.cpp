/*
 * Turns, mirrors and sorts the grid of a record; converts polar offsets to map coordinates.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/constants.h"
#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cpluvek.h"
#include "model/coordinates.h"

using clutter::base::adopt;
using clutter::base::cellCount;
using namespace clutter::model;

namespace {

/* A quarter turn moves gate g of ray r to gate (nrays - 1 - r) of ray g. */
std::unique_ptr<float[]> turned(const float* old, int ngates, int nrays) {
    std::unique_ptr<float[]> fresh(new float[cellCount(ngates, nrays)]);
    for (std::ptrdiff_t r = 0; r < nrays; ++r) {
        const float* ray = old + r * ngates;
        float* column = fresh.get() + (nrays - 1 - r);
        for (std::ptrdiff_t g = 0; g < ngates; ++g) {
            column[g * nrays] = ray[g];
        }
    }
    return fresh;
}

/* Extends the angles for more rays, whose azimuths are 0. */
void makeRoomForRays(float*& angles, int held, int wanted) {
    if (angles == nullptr || wanted <= held) {
        return;
    }
    std::unique_ptr<float[]> fresh(new float[static_cast<std::size_t>(wanted) + 1]());
    std::copy_n(angles, static_cast<std::size_t>(std::max(held, 0)) + 1, fresh.get());
    adopt(angles, std::move(fresh));
}

}  // namespace

void Cpluvek::Rot90() {
    if (this == nullptr || data == nullptr) {
        return;
    }
    adopt(data, turned(data, ngates, nrays));
    makeRoomForRays(angles, nrays, ngates);
    std::swap(ngates, nrays);
}

void Cpluvek::HorzMirror() {
    if (data == nullptr || cellCount(ngates, nrays) == 0) {
        return;
    }
    const auto ray = [this](std::ptrdiff_t r) { return data + r * ngates; };
    for (int r = 0; r < nrays / 2; ++r) {
        std::swap_ranges(ray(r), ray(r + 1), ray(nrays - 1 - r));
    }
}

void Cpluvek::VertMirror() {
    if (data == nullptr || cellCount(ngates, nrays) == 0) {
        return;
    }
    for (std::ptrdiff_t r = 0; r < nrays; ++r) {
        std::reverse(data + r * ngates, data + (r + 1) * ngates);
    }
}

int Cpluvek::SortPolarDataRays() {
    if (coordtype != kPolar || data == nullptr || angles == nullptr) {
        return 0;
    }
    const auto rays = static_cast<std::size_t>(std::max(nrays, 0));
    std::vector<float> sorted(rays);
    std::vector<int> from(rays);
    CDSP().Sort(angles + 1, sorted.data(), from.data(), nrays);
    std::unique_ptr<float[]> fresh(new float[cellCount(ngates, nrays)]);
    if (ngates > 0) {
        float* out = fresh.get();
        for (const std::ptrdiff_t old : from) {
            out = std::copy_n(data + old * ngates, ngates, out);
        }
    }
    std::copy(sorted.begin(), sorted.end(), angles + 1);
    adopt(data, std::move(fresh));
    return 1;
}

void Cpluvek::E1N1AzmRanToE2N2(double east1, double north1, double azimuth, double range,
                               double& east2, double& north2) {
    // Azimuth runs clockwise from north, the mathematical angle the other way from east.
    double angle = clutter::base::kPi / 2.0 - azimuth;
    if (angle < 0.0) {
        angle += 2.0 * clutter::base::kPi;
    }
    if (angle > 2.0 * clutter::base::kPi) {
        angle -= 2.0 * clutter::base::kPi;
    }
    east2 = east1 + range * std::cos(angle);
    north2 = north1 + range * std::sin(angle);
}
