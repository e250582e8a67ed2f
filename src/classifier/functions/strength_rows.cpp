/*
 * Rows of a pair of tables. A plain loop: vector gathers and comparisons would cost more than these
 * few loads.
 */
#include "classifier/functions/strength_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace clutter::classifier {
namespace {

constexpr double kMinShare = 1e-4;  // of the largest degree, which rounding is in proportion to
constexpr std::size_t kMaxPoints = 1000;
constexpr float kMaxFloat = std::numeric_limits<float>::max();

bool isSmooth(const std::vector<double>& degrees) {
    const auto [least, most] = std::minmax_element(degrees.begin(), degrees.end());
    return *least > 0.0 && *least >= kMinShare * *most;
}

}  // namespace

std::optional<StrengthRows> StrengthRows::make(const fuzzy::Table& clutter,
                                               const fuzzy::Table& precipitation) {
    const fuzzy::Points& c = clutter.points();
    const fuzzy::Points& p = precipitation.points();
    if (c.x != p.x || c.x.size() > kMaxPoints || !isSmooth(c.y) || !isSmooth(p.y)) {
        return std::nullopt;
    }
    StrengthRows made;
    made.thresholds_ = clutter.thresholds();
    if (!made.grid_.fit(made.thresholds_, kCells)) {
        return std::nullopt;
    }
    for (int cell = 0; cell < kCells; ++cell) {
        const auto at = std::upper_bound(made.thresholds_.begin(), made.thresholds_.end(),
                                         made.grid_.lowEnd(cell));
        made.first_.push_back(static_cast<std::uint16_t>(at - made.thresholds_.begin()));
    }
    made.first_.push_back(static_cast<std::uint16_t>(c.x.size()));
    made.thresholds_.push_back(std::numeric_limits<float>::quiet_NaN());

    made.rows_.push_back({0.0, c.y.front(), p.y.front(), 0.0, 0.0});
    for (std::size_t i = 1; i < c.x.size(); ++i) {
        const double run = c.x[i] - c.x[i - 1];
        made.rows_.push_back(
            {c.x[i], c.y[i], p.y[i], (c.y[i] - c.y[i - 1]) / run, (p.y[i] - p.y[i - 1]) / run});
    }
    made.rows_.push_back({0.0, c.y.back(), p.y.back(), 0.0, 0.0});
    made.rows_.push_back({0.0, 1.0, 1.0, 0.0, 0.0});
    return made;
}

void StrengthRows::multiply(const float* x, bool leaveOutNan, double* clutter,
                            double* precipitation, int n) const {
    int found[kMaxElements];
    grid_.find(x, found, n);
    const std::uint16_t* const first = first_.data();
    const float* const thresholds = thresholds_.data();
    const std::size_t ofNan = rows_.size() - (leaveOutNan ? 1 : 2);
    for (int j = 0; j < n; ++j) {
        float value = x[j];
        std::size_t at = first[found[j]];
        while (value >= thresholds[at]) {
            ++at;
        }
        at = value == value ? at : ofNan;
        value = value > -kMaxFloat ? value : -kMaxFloat;  // slopes are 0 there, also for NaN
        value = value < kMaxFloat ? value : kMaxFloat;
        const Row& row = rows_[at];
        const double past = static_cast<double>(value) - row.right;
        clutter[j] *= row.clutter + row.clutterSlope * past;
        precipitation[j] *= row.precipitation + row.precipitationSlope * past;
    }
}

}  // namespace clutter::classifier
