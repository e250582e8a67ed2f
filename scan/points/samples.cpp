#include "scan/points/samples.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

#include "scan/fields/find_field.h"
#include "scan/formats/record/write_record.h"

namespace scan {
namespace {

constexpr double kDegreesPerRadian = 180.0 / 3.14159265358979323846;
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();
/* Rays that stand alone, or too close together to tell a step, still reach this far. */
constexpr double kLeastReachDeg = 1.0;
/* Bounds of a list of points: what is not a file may have no end. */
constexpr std::size_t kMaxLineBytes = 1000;
constexpr std::size_t kMaxLines = 10'000'000;

double around(double degrees) {
    return std::abs(std::remainder(degrees, 360.0));
}

/* The usual step from one ray to the next. */
double usualStepDeg(std::vector<double> azimuths) {
    std::sort(azimuths.begin(), azimuths.end());
    std::vector<double> steps;
    for (size_t i = 1; i < azimuths.size(); ++i) steps.push_back(azimuths[i] - azimuths[i - 1]);
    if (steps.empty()) return 0.0;
    std::nth_element(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2),
                     steps.end());
    return steps[steps.size() / 2];
}

size_t nearestRay(const std::vector<double>& azimuths, double azimuth) {
    size_t best = 0;
    for (size_t r = 1; r < azimuths.size(); ++r) {
        if (around(azimuths[r] - azimuth) < around(azimuths[best] - azimuth)) best = r;
    }
    return best;
}

std::vector<float> sampleField(const Scan& scan, const Sweep& sweep, const Field& field,
                               GatePoints& at) {
    Cpluvek record;
    fillFieldRecord(scan, sweep, field.name, field.units, field.values, record);
    std::vector<float> values(at.points.size(), kNoValue);
    if (record.ExtractDataRA(at.points.first.data(), at.points.second.data(), values.data(),
                             static_cast<int>(values.size())) != 1)
        throw std::runtime_error("field " + field.name + " cannot be sampled");
    for (size_t i = 0; i < values.size(); ++i)
        if (!at.covered[i]) values[i] = kNoValue;
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
    if (record.ExtractDataXY(xy.data(), values.data(), static_cast<int>(values.size())) != 1)
        throw std::runtime_error("cannot be sampled");
    for (size_t i = 0; i < values.size(); ++i)
        if (!isOnGrid(record, points.first[i], points.second[i])) values[i] = kNoValue;
    return values;
}

/* The two numbers of a line, if it is not blank: a title or a third column must not become a point
 * that nobody asked for. */
void appendPair(const std::string& line, std::size_t number, Points& points) {
    std::istringstream words(line);
    std::vector<float> values;
    for (std::string word; words >> word;) {
        char* end = nullptr;
        values.push_back(std::strtof(word.c_str(), &end));
        if (*end != '\0') values.back() = kNoValue;
    }
    if (values.empty()) return;
    if (values.size() != 2 || !std::isfinite(values[0]) || !std::isfinite(values[1]))
        throw std::runtime_error("line " + std::to_string(number) + ": two numbers are expected");
    points.first.push_back(values[0]);
    points.second.push_back(values[1]);
}

}  // namespace

GatePoints gatePoints(const Sweep& sweep, const Points& points) {
    const double reach = std::max(usualStepDeg(sweep.azimuthDeg), kLeastReachDeg);
    const double length = sweep.ngates * sweep.gateSpacingM;
    GatePoints out;
    for (size_t i = 0; i < points.size(); ++i) {
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

Points readPoints(const std::string& path) {
    std::ifstream file(path);
    Points points;
    std::vector<char> line(kMaxLineBytes + 1);
    std::size_t number = 1;
    while (file.getline(line.data(), static_cast<std::streamsize>(line.size()))) {
        appendPair(line.data(), number++, points);
        if (number > kMaxLines) {
            throw std::runtime_error("holds more than " + std::to_string(kMaxLines) + " lines");
        }
    }
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error("cannot be read");
    }
    if (!file.eof()) {
        throw std::runtime_error("line " + std::to_string(number) + ": is too long");
    }
    if (points.size() == 0)
        throw std::runtime_error("holds no points: two numbers a line are expected");
    return points;
}

Points polarFromMap(const Points& map, double east, double north, double elevationDeg) {
    Points polar;
    const double alongBeam = 1.0 / std::cos(elevationDeg / kDegreesPerRadian);
    for (size_t i = 0; i < map.size(); ++i) {
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
    if (sweep.rhi) throw std::runtime_error("is a range-height scan: its rays share one azimuth");
    if (!(sweep.gateSpacingM > 0)) throw std::runtime_error("the gate spacing is not positive");
    std::vector<const Field*> fields;
    fields.reserve(sweep.fields.size() + names.size());
    for (const std::string& name : names) fields.push_back(&findField(sweep, name));
    if (names.empty())
        for (const Field& field : sweep.fields) fields.push_back(&field);
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
        const size_t at = findName(all, name);
        samples.names.push_back(all[at]);
        samples.columns.push_back(sampleRecord(grid.records[at], points));
    }
    return samples;
}

}  // namespace scan
