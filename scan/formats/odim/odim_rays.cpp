/*
 * Rays of ODIM_H5. Files give the azimuths of a circle as starts and stops, as starts only, as
 * pairs in a text ("0:1,1:2", release 2.0), or not at all: then rays share the circle evenly,
 * beginning at how/astart. Elevations of an elevation scan likewise.
 */
#include "scan/formats/odim/odim_rays.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

#include "scan/calendar.h"

namespace scan::odim {
namespace {

constexpr double kCircleDeg = 360;

double wrapped(double azimuthDeg) {
    const double rest = std::fmod(azimuthDeg, kCircleDeg);
    return rest < 0 ? rest + kCircleDeg : rest;
}

bool allFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

/* An array of how, if it has one number a ray. */
std::vector<double> perRay(const Level& dataset, const char* name, std::size_t rays) {
    std::vector<double> values = dataset.numbers(Folder::kHow, name);
    if (values.size() != rays || !allFinite(values)) {
        values.clear();
    }
    return values;
}

/* The middle of two angles, the short way round. */
double middleDeg(double from, double to) {
    return from + std::remainder(to - from, kCircleDeg) / 2;
}

std::vector<double> middles(const std::vector<double>& starts, const std::vector<double>& stops) {
    std::vector<double> result;
    for (std::size_t r = 0; r < starts.size(); ++r) {
        result.push_back(middleDeg(starts[r], stops[r]));
    }
    return result;
}

/* With starts only, a ray ends where the next one starts; the last is as wide as the one before. */
std::vector<double> middles(const std::vector<double>& starts) {
    std::vector<double> result;
    for (std::size_t r = 0; r < starts.size(); ++r) {
        const bool last = r + 1 == starts.size();
        const double step = starts.size() < 2 ? 0
                            : last ? std::remainder(starts[r] - starts[r - 1], kCircleDeg)
                                   : std::remainder(starts[r + 1] - starts[r], kCircleDeg);
        result.push_back(starts[r] + step / 2);
    }
    return result;
}

/* Pairs of starts and stops in one list, or one angle a ray. */
std::vector<double> listed(const Level& dataset, const char* name, std::size_t rays) {
    const std::vector<double> values = dataset.numbers(Folder::kHow, name);
    if (!allFinite(values)) {
        return {};
    }
    if (values.size() == rays) {
        return values;
    }
    std::vector<double> result;
    if (values.size() == 2 * rays) {
        for (std::size_t r = 0; r < rays; ++r) {
            result.push_back(middleDeg(values[2 * r], values[2 * r + 1]));
        }
    }
    return result;
}

/* Of starts and stops, of starts, of a list; empty if the file has none that fits. */
std::vector<double> anglesOf(const Level& dataset, const char* start, const char* stop,
                             const char* list, std::size_t rays) {
    const std::vector<double> starts = perRay(dataset, start, rays);
    const std::vector<double> stops = perRay(dataset, stop, rays);
    if (!starts.empty() && !stops.empty()) {
        return middles(starts, stops);
    }
    return starts.empty() ? listed(dataset, list, rays) : middles(starts);
}

/* As the format has it without how: the circle, or the sector of where, in equal parts. */
std::vector<double> nominalAzimuths(const Level& dataset, std::size_t rays) {
    const auto from = dataset.number(Folder::kWhere, "startaz");
    const auto to = dataset.number(Folder::kWhere, "stopaz");
    double begin = dataset.number(Folder::kHow, "astart").value_or(0);
    double widthDeg = kCircleDeg;
    if (from && to && *from != *to) {
        begin = *from;
        widthDeg = wrapped(*to - *from);
    }
    std::vector<double> result;
    for (std::size_t r = 0; r < rays; ++r) {
        result.push_back(begin +
                         (static_cast<double>(r) + 0.5) * widthDeg / static_cast<double>(rays));
    }
    return result;
}

void fillElevationScan(const Level& dataset, std::size_t rays, Sweep& sweep) {
    sweep.elevationDeg = anglesOf(dataset, "startelA", "stopelA", "elangles", rays);
    if (sweep.elevationDeg.empty()) {
        sweep.elevationDeg = dataset.numbers(Folder::kWhere, "angles");
    }
    if (sweep.elevationDeg.size() != rays || !allFinite(sweep.elevationDeg)) {
        throw std::runtime_error(dataset.group().path() + " has no elevation for each of its rays");
    }
    sweep.azimuthDeg = anglesOf(dataset, "startazA", "stopazA", "azangles", rays);
    if (sweep.azimuthDeg.empty()) {
        const auto azimuth =
            dataset.firstNumber(Folder::kWhere, {"az_angle", "azangle", "azimuth"});
        sweep.azimuthDeg.assign(rays, azimuth.value_or(0));
    }
    sweep.fixedAngleDeg =
        wrapped(dataset.firstNumber(Folder::kWhere, {"az_angle", "azangle", "azimuth"})
                    .value_or(sweep.azimuthDeg[rays / 2]));
}

void fillAzimuthScan(const Level& dataset, std::size_t rays, Sweep& sweep) {
    sweep.azimuthDeg = anglesOf(dataset, "startazA", "stopazA", "azangles", rays);
    if (sweep.azimuthDeg.empty()) {
        sweep.azimuthDeg = nominalAzimuths(dataset, rays);
    }
    sweep.elevationDeg = anglesOf(dataset, "startelA", "stopelA", "elangles", rays);
    auto fixed = dataset.firstNumber(Folder::kWhere, {"elangle", "elevation"});
    if (!fixed && !sweep.elevationDeg.empty()) {
        fixed = sweep.elevationDeg[rays / 2];
    }
    if (!fixed || !std::isfinite(*fixed)) {
        throw std::runtime_error(dataset.group().pathOf("where") + " has no usable elangle");
    }
    sweep.fixedAngleDeg = *fixed;
    if (sweep.elevationDeg.empty()) {
        sweep.elevationDeg.assign(rays, *fixed);
    }
}

/* startazT and stopazT count seconds since 1970. */
std::vector<double> measuredTimes(const Level& dataset, bool rhi, std::size_t rays) {
    const std::vector<double> starts = perRay(dataset, rhi ? "startelT" : "startazT", rays);
    const std::vector<double> stops = perRay(dataset, rhi ? "stopelT" : "stopazT", rays);
    if (starts.empty() || stops.empty()) {
        return starts;
    }
    std::vector<double> result;
    for (std::size_t r = 0; r < rays; ++r) {
        result.push_back(starts[r] + (stops[r] - starts[r]) / 2);
    }
    return result;
}

/* Evenly from the start of the sweep, beginning with the ray that was the first in time. */
std::vector<double> nominalTimes(const Level& dataset, std::size_t rays) {
    const auto start = timeOf(dataset, "startdate", "starttime");
    const auto end = timeOf(dataset, "enddate", "endtime");
    if (!start) {
        return {};
    }
    const double duration = end && *end > *start ? *end - *start : 0;
    const double first = dataset.number(Folder::kWhere, "a1gate").value_or(0);
    const auto n = static_cast<double>(rays);
    std::vector<double> result;
    for (std::size_t r = 0; r < rays; ++r) {
        const double after = std::fmod(static_cast<double>(r) - first + n, n);
        const double turn = std::isfinite(after) && after >= 0 ? after : static_cast<double>(r);
        result.push_back(*start + (turn + 0.5) / n * duration);
    }
    return result;
}

const char* modeOf(const Sweep& sweep) {
    constexpr double kVerticalDeg = 89;
    if (sweep.rhi) {
        return "rhi";
    }
    return sweep.fixedAngleDeg > kVerticalDeg ? "vertical_pointing" : "azimuth_surveillance";
}

}  // namespace

std::optional<double> timeOf(const Level& level, const char* date, const char* time) {
    const std::string day = level.text(Folder::kWhat, date).value_or("");
    const std::string clock = level.text(Folder::kWhat, time).value_or("");
    if (day.size() < 8 || clock.size() < 4) {
        return std::nullopt;
    }
    const auto part = [](const std::string& text, std::size_t at, std::size_t count) {
        return at < text.size() ? std::atoi(text.substr(at, count).c_str()) : 0;
    };
    const DateTime moment{part(day, 0, 4),   part(day, 4, 2),   part(day, 6, 2),
                          part(clock, 0, 2), part(clock, 2, 2), part(clock, 4, 2)};
    if (moment.year < 1900 || moment.month < 1 || moment.month > 12 || moment.day < 1 ||
        moment.day > 31) {
        return std::nullopt;
    }
    return secondsOf(moment);
}

void fillRays(const Level& dataset, bool elevationScan, Sweep& sweep) {
    const auto rays = static_cast<std::size_t>(sweep.nrays);
    sweep.rhi = elevationScan;
    if (elevationScan) {
        fillElevationScan(dataset, rays, sweep);
    } else {
        fillAzimuthScan(dataset, rays, sweep);
    }
    std::transform(sweep.azimuthDeg.begin(), sweep.azimuthDeg.end(), sweep.azimuthDeg.begin(),
                   wrapped);
    sweep.mode = modeOf(sweep);
    sweep.rayTimeS = measuredTimes(dataset, elevationScan, rays);
    if (sweep.rayTimeS.empty()) {
        sweep.rayTimeS = nominalTimes(dataset, rays);
    }
}

}  // namespace scan::odim
