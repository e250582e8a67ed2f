/* ratio_curve.cpp - two densities of one input, and their monotone log ratio. */
#include "scan/membership/ratio_curve.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace scan {
namespace {

constexpr double kKernelSteps = 1.5;
constexpr double kKernelValues = 1000;
constexpr double kPseudoValues = 50;
constexpr double kMaxRatio = 4;

constexpr double kNone = -HUGE_VAL;  // a texture has no lower bound

constexpr InputAxis kAxes[] = {
    {"sZhh", 0.1, 60, true, false, false, kNone, 64},
    {"sZdr", 0.05, 20, true, false, false, kNone, 64},
    {"sPdp", 0.5, 180, true, false, false, kNone, 192},
    {"sRhv", 0.001, 0.6, true, false, false, kNone, 1},
    {"Vel", 0.05, 64, true, true, true, -128, 128},
    {"LDR", -45, 5, false, false, false, -64, 32},
    {"Rhv", 0, 1.05, false, false, true, -1, 2},
    {"Wid", 0.05, 16, true, false, true, -1, 64},
};

using Values = std::vector<double>;

/* The place of a value among the points, from 0 to kPoints - 1. */
double placeOf(const InputAxis& axis, double value) {
    const double x = axis.mirrored ? std::fabs(value) : value;
    const double last = RatioCurve::kPoints - 1;
    double share = (x - axis.low) / (axis.high - axis.low);
    if (axis.logarithmic) {
        share = x > axis.low ? std::log(x / axis.low) / std::log(axis.high / axis.low) : 0;
    }
    return std::clamp(share * last, 0.0, last);
}

bool isPhysical(const InputAxis& axis, float value) {
    const auto x = static_cast<double>(value);
    return x > axis.neutralBelow && x < axis.neutralAbove;  // not for NaN
}

/* Each value is shared among the two points beside it. */
Values histogram(const InputAxis& axis, const std::vector<float>& values, double& count) {
    Values bins(RatioCurve::kPoints);
    count = 0;
    for (const float value : values) {
        if (!isPhysical(axis, value)) {
            continue;
        }
        const double place = placeOf(axis, static_cast<double>(value));
        const auto left = std::min(static_cast<std::size_t>(place), bins.size() - 2);
        bins[left] += 1 - (place - static_cast<double>(left));
        bins[left + 1] += place - static_cast<double>(left);
        ++count;
    }
    return bins;
}

Values smoothed(const Values& bins, double width) {
    Values result(bins.size());
    for (std::size_t i = 0; i < bins.size(); ++i) {
        Values kernel(bins.size());
        double sum = 0;
        for (std::size_t j = 0; j < bins.size(); ++j) {
            const double steps = (static_cast<double>(i) - static_cast<double>(j)) / width;
            kernel[j] = std::exp(-0.5 * steps * steps);
            sum += kernel[j];
        }
        for (std::size_t j = 0; j < bins.size(); ++j) {
            result[j] += bins[i] * kernel[j] / sum;
        }
    }
    return result;
}

struct Density {
    Values shares;
    double values = 0;
};

/* The mean over the scans that have values of the class. */
Density densityOf(const InputAxis& axis, const std::vector<ClassValues>& scans,
                  std::vector<float> ClassValues::*values) {
    Density density{Values(RatioCurve::kPoints), 0};
    int parts = 0;
    for (const ClassValues& scan : scans) {
        double count = 0;
        const Values bins = histogram(axis, scan.*values, count);
        if (count == 0) {
            continue;
        }
        for (std::size_t i = 0; i < bins.size(); ++i) {
            density.shares[i] += bins[i] / count;
        }
        density.values += count;
        ++parts;
    }
    if (parts == 0) {
        return density;
    }
    for (double& share : density.shares) {
        share /= parts;
    }
    const double width = kKernelSteps * std::pow(kKernelValues / density.values, 0.2);
    density.shares = smoothed(density.shares, width);
    return density;
}

/* The nearest rising sequence: neighbours that fall are pooled. */
Values risen(const Values& values, const Values& weights) {
    struct Pool {
        double mean, weight;
        std::size_t count;
    };
    std::vector<Pool> pools;
    for (std::size_t i = 0; i < values.size(); ++i) {
        pools.push_back({values[i], weights[i], 1});
        while (pools.size() > 1 && pools[pools.size() - 2].mean > pools.back().mean) {
            const Pool right = pools.back();
            pools.pop_back();
            Pool& left = pools.back();
            const double weight = left.weight + right.weight;
            left.mean = (left.mean * left.weight + right.mean * right.weight) / weight;
            left.weight = weight;
            left.count += right.count;
        }
    }
    Values result;
    for (const Pool& pool : pools) {
        result.insert(result.end(), pool.count, pool.mean);
    }
    return result;
}

}  // namespace

const InputAxis* axisOf(const std::string& tag) {
    const auto* found = std::find_if(std::begin(kAxes), std::end(kAxes),
                                     [&](const InputAxis& axis) { return tag == axis.tag; });
    return found == std::end(kAxes) ? nullptr : found;
}

std::optional<RatioCurve> RatioCurve::fit(const InputAxis& axis,
                                          const std::vector<ClassValues>& scans) {
    const Density above = densityOf(axis, scans, &ClassValues::precipitation);
    const Density below = densityOf(axis, scans, &ClassValues::clutter);
    if (above.values == 0 || below.values == 0) {
        return std::nullopt;
    }
    const double sign = axis.clutterIsLow ? 1 : -1;
    Values ratios, weights;
    for (std::size_t i = 0; i < above.shares.size(); ++i) {
        const double mean = 0.5 * (above.shares[i] + below.shares[i]) + 1e-12;
        const auto withPseudo = [&](const Density& density) {
            return (density.shares[i] * density.values + mean * kPseudoValues) /
                   (density.values + kPseudoValues);
        };
        ratios.push_back(sign * std::log(withPseudo(above) / withPseudo(below)));
        weights.push_back(2 * mean);
    }
    RatioCurve curve(axis);
    for (const double ratio : risen(ratios, weights)) {
        curve.ratios_.push_back(std::clamp(sign * ratio, -kMaxRatio, kMaxRatio));
    }
    return curve;
}

double RatioCurve::abscissa(int point) const {
    const double share = static_cast<double>(point) / (kPoints - 1);
    return axis_->logarithmic ? axis_->low * std::pow(axis_->high / axis_->low, share)
                              : axis_->low + share * (axis_->high - axis_->low);
}

double RatioCurve::at(float value) const {
    if (!isPhysical(*axis_, value)) {
        return 0;
    }
    const double place = placeOf(*axis_, static_cast<double>(value));
    const int left = std::min(static_cast<int>(place), kPoints - 2);
    const double share = place - left;
    return (1 - share) * ratio(left) + share * ratio(left + 1);
}

}  // namespace scan
