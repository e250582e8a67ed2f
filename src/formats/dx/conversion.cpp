/*
 * German DX scans as field records.
 */
#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "base/array.h"
#include "base/constants.h"
#include "base/text.h"
#include "clutterclassifier/CGermanRadar.h"
#include "formats/dx/layout.h"
#include "model/display.h"

using clutter::base::adopt;
using clutter::base::copyText;
using namespace clutter::formats;

namespace {

constexpr int kRecords = 2;
constexpr float kBeamWidthRad = 0.019198622f;  // 1.1 degrees
constexpr float kGateSizeM = 1000.0f;

struct Description {
    const char* name;
    const char* units;
    float displaymin;
    float displaymax;
};

constexpr Description kDescriptions[kRecords] = {
    {"Z", "dBZ", -10.0f, 60.0f},
    {"Elev Angles", "Deg", -1.0f, 5.0f},
};

float radians(double degrees) {
    return static_cast<float>(degrees * clutter::base::kPiSevenDecimals / 180);
}

void fillArrays(const CGermanRadar& radar, int ngates, int k, Cpluvek& record) {
    const auto width = static_cast<std::size_t>(ngates);
    std::unique_ptr<float[]> angles(new float[kDxRays + 1]);
    std::unique_ptr<float[]> data(new float[kDxRays * width]);
    angles[0] = radians(radar.elevation[0]);
    for (std::size_t r = 0; r < kDxRays; ++r) {
        angles[1 + r] = radians(radar.azimuth[r]);
        const double* bins = radar.reflectivity + r * kDxSlots;
        float* row = data.get() + r * width;
        if (k == 0) {
            std::transform(bins, bins + width, row, [](double v) { return static_cast<float>(v); });
        } else {
            std::fill_n(row, width, static_cast<float>(radar.elevation[r]));
        }
    }
    adopt(record.angles, std::move(angles));
    adopt(record.data, std::move(data));
}

void fillHeader(const CGermanRadar& radar, int ngates, int k, Cpluvek& record) {
    record.ngates = ngates;
    record.nrays = kDxRays;
    record.nrecords = kRecords;
    record.recindex = k;
    record.latitude = record.longitude = 0.0f;
    record.year = radar.year;
    record.month = radar.month;
    record.day = radar.day;
    record.hour = radar.hour;
    record.minute = radar.minute;
    record.second = radar.second;
    record.beamwidth = kBeamWidthRad;
    record.gatesize = kGateSizeM;
    record.firstgate = 0;
}

void fillDisplay(const Description& description, Cpluvek& record) {
    clutter::model::showWholeScan(record, 5.0f, "Range [km]", "Range [km]");
    clutter::model::entitleByTime(record);
    copyText(record.name, description.name);
    copyText(record.units, description.units);
    record.displaymin = description.displaymin;
    record.displaymax = description.displaymax;
}

}  // namespace

void CGermanRadar::german2pluvek(Cpluvek* fields) {
    if (fields == nullptr || loaded == 0) {
        return;
    }
    const int ngates = std::clamp(bins, 0, kDxSlots);
    for (int k = 0; k < kRecords; ++k) {
        fillArrays(*this, ngates, k, fields[k]);
        fillHeader(*this, ngates, k, fields[k]);
        fillDisplay(kDescriptions[k], fields[k]);
    }
}
