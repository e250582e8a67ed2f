/* quantity.cpp - names, colours and scales of quantities. */
#include "picture/quantity.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "scan/class_codes.h"
#include "scan/fields/role.h"
#include "scan/quantile.h"
#include "scan/text.h"

namespace cli {

namespace {

struct Shown {
    scan::Role role;
    Palette palette;
    double low, high;
};

/* Usual ends of the scale: wide enough for most weather, narrow enough to show its structure. */
constexpr Shown kShown[] = {
    {scan::Role::kZhh, Palette::kReflectivity, -10.0, 70.0},
    {scan::Role::kZdr, Palette::kSequential, -2.0, 6.0},
    {scan::Role::kPdp, Palette::kSequential, 0.0, 360.0},
    {scan::Role::kRhv, Palette::kSequential, 0.5, 1.0},
    {scan::Role::kVel, Palette::kDiverging, -30.0, 30.0},
    {scan::Role::kWid, Palette::kSequential, 0.0, 8.0},
    {scan::Role::kLdr, Palette::kSequential, -40.0, 0.0},
    {scan::Role::kPdf, Palette::kSequential, 0.0, 1.0},
    {scan::Role::kKdp, Palette::kSequential, -1.0, 7.0},
};

using Ends = std::pair<double, double>;

/* From the 2nd to the 98th percentile, rounded outwards: a few corrupt values do not matter. */
Ends robustEnds(const std::vector<float>& values) {
    std::vector<float> valid;
    for (const float value : values) {
        if (std::isfinite(value)) {
            valid.push_back(value);
        }
    }
    if (valid.empty()) {
        return {0.0, 1.0};
    }
    const auto at = [&](double share) {
        return static_cast<double>(
            scan::valueOfRank(valid, scan::rankOfShare(share, valid.size())));
    };
    const double low = at(0.02), high = at(0.98);
    const double margin = std::max(1.0, 0.1 * std::abs(low));  // less would be lost in rounding
    if (!(high > low)) {
        return {low - margin, low + margin};
    }
    const double step = std::pow(10.0, std::floor(std::log10(high - low)));
    return {std::floor(low / step) * step, std::ceil(high / step) * step};
}

Ends extremes(const std::vector<float>& values) {
    Ends ends{0.0, 0.0};
    for (const float value : values) {
        if (!std::isfinite(value)) {
            continue;
        }
        ends = {std::min<double>(ends.first, value), std::max<double>(ends.second, value)};
    }
    return ends;
}

/* The scales of phase and velocity depend on the radar's range of angles and Nyquist velocity. */
Ends usualEnds(const Shown& shown, const scan::Field& field, const scan::Sweep& sweep) {
    if (shown.role == scan::Role::kPdp) {
        const auto [low, high] = extremes(field.values);
        if (low < -1.0) {
            return {-180.0, 180.0};
        }
        return {0.0, high > 180.0 ? 360.0 : 180.0};
    }
    if (shown.role == scan::Role::kVel && sweep.nyquist > 0.0 && std::isfinite(sweep.nyquist)) {
        return {-sweep.nyquist, sweep.nyquist};
    }
    return {shown.low, shown.high};
}

ColourScale scaleOf(const scan::Field& field, const scan::Sweep& sweep,
                    const PictureOptions& options) {
    const scan::Role role = scan::roleOfName(field.name);
    const auto* shown = std::find_if(std::begin(kShown), std::end(kShown),
                                     [&](const Shown& row) { return row.role == role; });
    const bool known = shown != std::end(kShown);
    Ends ends = known ? usualEnds(*shown, field, sweep) : robustEnds(field.values);
    if (std::isfinite(options.displayMin)) {
        ends.first = options.displayMin;
    }
    if (std::isfinite(options.displayMax)) {
        ends.second = options.displayMax;
    }
    if (!(ends.second > ends.first)) {
        throw std::invalid_argument("the colour scale must end above its beginning, not go from " +
                                    std::to_string(ends.first) + " to " +
                                    std::to_string(ends.second));
    }
    return {known ? shown->palette : Palette::kSequential, ends.first, ends.second};
}

}  // namespace

ColourScale::ColourScale(Palette of, double from, double to)
    : classes(false), palette(of), low(from), high(to) {
    for (std::size_t i = 0; i < table_.size(); ++i) {
        table_[i] = colourAt(of, static_cast<double>(i) / (table_.size() - 1));
    }
}

ColourScale ColourScale::ofReasons() {
    ColourScale scale;
    scale.classes = false;
    scale.reasons = true;
    return scale;
}

bool ColourScale::colour(float value, Rgb& result) const {
    if (std::isnan(value)) {
        return false;
    }
    if (classes) {
        result = classColour(value);
        return result != kNoDataColour;
    }
    if (reasons) {
        result = reasonColour(value);
        return result != kNoDataColour;
    }
    const double position = std::clamp((value - low) / (high - low), 0.0, 1.0);
    result = table_[static_cast<std::size_t>(std::lround(position * (table_.size() - 1)))];
    return true;
}

Quantity quantityOf(const scan::Field& field, const scan::Sweep& sweep,
                    const PictureOptions& options) {
    const std::string name = scan::printable(field.name);
    if (scan::isClassField(field)) {
        return {"Classes", "", ColourScale()};
    }
    if (field.name == kReasonField) {
        return {name, "", ColourScale::ofReasons()};
    }
    if (field.name == kProbabilityField) {
        return {name, "", ColourScale(Palette::kSequential, 0.0, 1.0)};
    }
    const scan::Role role = scan::roleOfName(field.name);
    Quantity quantity{name, scan::printable(field.units), scaleOf(field, sweep, options)};
    if (role == scan::Role::kNone) {
        return quantity;
    }
    quantity.heading = std::string(scan::roleInfo(role).text) + " (" + name + ")";
    quantity.heading[0] = static_cast<char>(std::toupper(quantity.heading[0]));
    quantity.units = scan::roleInfo(role).units;
    return quantity;
}

std::array<double, 6> classShares(const std::vector<float>& classes) {
    constexpr float kCodes[] = {0.0f, 5.0f, 3.0f, -1.0f, 6.0f, 7.0f};
    std::array<double, 6> shares{};
    for (const float code : classes) {
        const auto* found = std::find(std::begin(kCodes), std::end(kCodes), code);
        shares[found != std::end(kCodes) ? static_cast<std::size_t>(found - kCodes) : 3] += 1.0;
    }
    for (double& share : shares) {
        share /= std::max<double>(1.0, static_cast<double>(classes.size()));
    }
    return shares;
}

std::vector<double> ticksBetween(double low, double high, double count) {
    const double least = (high - low) / std::max(count, 1.0);
    if (!(least > 0.0) || !std::isfinite(least)) {
        return {low};
    }
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    double step = 10.0 * power;
    for (const double factor : {5.0, 2.0, 1.0}) {
        if (factor * power >= least * (1.0 - 1e-9)) {
            step = factor * power;
        }
    }
    std::vector<double> ticks;
    const double slack = 1e-9 * (high - low);
    for (double i = std::ceil((low - slack) / step); i * step <= high + slack; i += 1.0) {
        ticks.push_back(i * step);
    }
    return ticks;
}

std::string tickText(double tick, double step) {
    int decimals = 0;
    while (decimals < 6 && std::abs(step * std::pow(10.0, decimals) -
                                    std::round(step * std::pow(10.0, decimals))) > 1e-6) {
        ++decimals;
    }
    if (std::abs(tick) < 1e-9 * std::abs(step)) {
        tick = 0.0;
    }
    char text[64];
    std::snprintf(text, sizeof text, std::abs(tick) < 1e6 ? "%.*f" : "%.*g", decimals, tick);
    return text;
}

}  // namespace cli
