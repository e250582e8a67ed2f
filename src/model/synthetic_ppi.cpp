/*
 * A scan of uniform noise on a full circle, for experiments.
 */
#include <algorithm>
#include <climits>
#include <cstddef>
#include <iterator>
#include <memory>

#include "base/array.h"
#include "base/constants.h"
#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Ctiempo.h"
#include "model/coordinates.h"

using clutter::base::adopt;
using clutter::base::cellCount;

namespace {

constexpr float kMinValue = -10.0f;
constexpr float kMaxValue = 60.0f;
constexpr float kReach = 50000.0f;
constexpr float kTick = 10000.0f;

/* r / n of the full circle in radians, in single precision from left to right. */
float fractionOfCircle(int r, int n) {
    return static_cast<float>(r) * 360.0f / static_cast<float>(n) * clutter::base::kFloatPi /
           180.0f;
}

std::unique_ptr<float[]> noise(std::size_t count) {
    std::unique_ptr<float[]> values(new float[count]());
    CDSP().GenerateRandomNoise(values.get(), static_cast<int>(count), kMinValue, kMaxValue);
    return values;
}

std::unique_ptr<float[]> fullCircle(int nrays) {
    std::unique_ptr<float[]> angles(new float[static_cast<std::size_t>(nrays) + 1]);
    float* out = angles.get();
    *out++ = 0.0f;
    for (int r = 0; r < nrays; ++r) {
        *out++ = fractionOfCircle(r, nrays);
    }
    return angles;
}

}  // namespace

void Cpluvek::CreateDataSpaceforPPI(int rays, int gates) {
    const std::size_t count = cellCount(gates, rays);
    if (count == 0 || count > INT_MAX) {
        return;
    }
    Ctiempo().timenow(year, month, day, hour, minute, second);
    adopt(data, noise(count));
    adopt(angles, fullCircle(rays));
    nrays = rays;
    ngates = gates;
    coordtype = clutter::model::kPolar;
    nrecords = 1;
    recindex = 0;
    valid = 1;
    colorflag = 255;
    colormap = 0;
    wavelength = 320.0f;
    beamwidth = fractionOfCircle(1, nrays);
    gatesize = 250.0f;
    pulsedepth = 2.0f;
    rpm = 2.0f;
    nsamples = 100.0f;
    prf = 1300.0f;
    firstgate = 0;
    radarid = 0;
    displaymin = kMinValue;
    displaymax = 50.0f;
    const float limits[6] = {-kReach, kReach, kTick, -kReach, kReach, kTick};
    std::copy(std::begin(limits), std::end(limits), axislimits);
}
