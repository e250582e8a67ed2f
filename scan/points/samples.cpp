/* samples.cpp - points to gates, and the library's extraction. */
#include "scan/points/samples.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

#include "scan/angles.h"
#include "scan/fields/find_field.h"
#include "scan/formats/record/write_record.h"
#include "scan/quantile.h"
#include "scan/scan.h"

namespace scan {
namespace {

/* Single rays, and rays too close together to have a step, still reach this far. */
constexpr double kMinReachDeg = 1.0;

double around(double degrees) {
    return std::abs(std::remainder(degrees, 360.0));
}

/* The usual step from one ray to the next. */
double usualStepDeg(std::vector<double> azimuths) {
    std::sort(azimuths.begin(), azimuths.end());
    std::vector<double> steps;
    for (std::size_t i = 1; i < azimuths.size(); ++i) {
        steps.push_back(azimuths[i] - azimuths[i - 1]);
    }
    return steps.empty() ? 0.0 : upperMedian(std::move(steps));
}

std::size_t nearestRay(const std::vector<double>& azimuths, double azimuth) {
    std::size_t best = 0;
    for (std::size_t r = 1; r < azimuths.size(); ++r) {
        if (around(azimuths[r] - azimuth) < around(azimuths[best] - azimuth)) {
            best = r;
        }
    }
    return best;
}

std::vector<float> sampleField(const Scan& scan, const Sweep& sweep, const Field& field,
                               GatePoints& at) {
    Cpluvek record;
    fillFieldRecord(scan, sweep, field.name, field.units, field.values, record);
    std::vector<float> values(at.points.size(), kNoValue);
    if (record.ExtractDataRA(at.points.first.data(), at.points.second.data(), values.data(),
                             static_cast<int>(values.size())) != 1) {
        throw std::runtime_error("field " + field.name + " cannot be sampled");
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!at.covered[i]) {
            values[i] = kNoValue;
        }
    }
    return values;
}

/* Whether a map point lies on the grid: there, any value is one. */
bool isOnGrid(const Cpluvek& record, float x, float y) {
    const float column = (x - record.axislimits0[0]) / record.gatesize;
    const float row = (y - record.axislimits0[3]) / record.gatesize;
    return column >= 0 && row >= 0 && static_cast<double>(column) < record.nrays &&
           static_cast<double>(row) < record.ngates;
}

std::vector<float> sampleRecord(Cpluvek& record, const Points& points) {
    std::vector<float> xy = points.first;
    xy.insert(xy.end(), points.second.begin(), points.second.end());
    std::vector<float> values(points.size(), kNoValue);
    if (record.ExtractDataXY(xy.data(), values.data(), static_cast<int>(values.size())) != 1) {
        throw std::runtime_error("cannot be sampled");
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!isOnGrid(record, points.first[i], points.second[i])) {
            values[i] = kNoValue;
        }
    }
    return values;
}

}  // namespace

GatePoints gatePoints(const Sweep& sweep, const Points& points) {
    const double reach = std::max(usualStepDeg(sweep.azimuthDeg), kMinReachDeg);
    const double length = sweep.ngates * sweep.gateSpacingM;
    GatePoints out;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto azimuth = static_cast<double>(points.second[i]);
        const double ray = sweep.azimuthDeg[nearestRay(sweep.azimuthDeg, azimuth)];
        const double range =
            static_cast<double>(points.first[i]) - sweep.firstGateM + 0.5 * sweep.gateSpacingM;
        out.points.first.push_back(static_cast<float>(range));
        out.points.second.push_back(static_cast<float>(ray));
        out.covered.push_back(range >= 0.0 && range < length && around(ray - azimuth) <= reach);
    }
    return out;
}

Points polarFromMap(const Points& map, double east, double north, double elevationDeg) {
    Points polar;
    const double alongBeam = 1.0 / std::cos(elevationDeg / kDegreesPerRadian);
    for (std::size_t i = 0; i < map.size(); ++i) {
        const double x = static_cast<double>(map.first[i]) - east;
        const double y = static_cast<double>(map.second[i]) - north;
        polar.first.push_back(static_cast<float>(std::hypot(x, y) * alongBeam));
        const double azimuth = std::atan2(x, y) * kDegreesPerRadian;
        polar.second.push_back(static_cast<float>(azimuth < 0.0 ? azimuth + 360.0 : azimuth));
    }
    return polar;
}

Samples sampleSweep(const Scan& scan, const Sweep& sweep, const Points& points,
                    const std::vector<std::string>& names) {
    if (sweep.rhi) {
        throw std::runtime_error("is a range-height scan: its rays share one azimuth");
    }
    if (!(sweep.gateSpacingM > 0)) {
        throw std::runtime_error("the gate spacing is not positive");
    }
    std::vector<const Field*> fields;
    fields.reserve(sweep.fields.size() + names.size());
    for (const std::string& name : names) {
        fields.push_back(&findField(sweep, name));
    }
    if (names.empty()) {
        for (const Field& field : sweep.fields) {
            fields.push_back(&field);
        }
    }
    GatePoints at = gatePoints(sweep, points);
    Samples samples;
    for (const Field* field : fields) {
        samples.names.push_back(field->name);
        samples.columns.push_back(sampleField(scan, sweep, *field, at));
    }
    return samples;
}

Samples sampleGrid(const RecordArray& grid, const Points& points,
                   const std::vector<std::string>& names) {
    const std::vector<std::string> all = grid.names();
    Samples samples;
    samples.names.reserve(all.size() + names.size());
    for (const std::string& name : names.empty() ? all : names) {
        const std::size_t at = findName(all, name);
        samples.names.push_back(all[at]);
        samples.columns.push_back(sampleRecord(grid.records[at], points));
    }
    return samples;
}

}  // namespace scan
