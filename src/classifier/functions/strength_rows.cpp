/*
 * Rows of a pair of tables.
 */
#include "classifier/functions/strength_rows.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "base/kernel.h"

namespace clutter::classifier {
namespace {

constexpr double kMinShare = 1e-4;  // of the largest degree, which rounding is in proportion to
constexpr std::size_t kMaxPoints = 1000;
constexpr float kMaxFloat = std::numeric_limits<float>::max();

/* The slopes beyond the ends are 0, but an infinity or a NaN would not vanish there. */
CLUTTER_KERNEL void makeFinite(const float* __restrict x, float* __restrict out, int n) {
    for (int j = 0; j < n; ++j) {
        const float value = x[j] > -kMaxFloat ? x[j] : -kMaxFloat;
        out[j] = value < kMaxFloat ? value : kMaxFloat;
    }
}

CLUTTER_KERNEL void leaveOut(const float* __restrict x, int row, int* __restrict segments, int n) {
    for (int j = 0; j < n; ++j) {
        segments[j] = x[j] == x[j] ? segments[j] : row;
    }
}

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
    StrengthRows made(clutter);
    const ClassPair level = {};
    made.rows_.push_back({0.0, ClassPair{c.y.front(), p.y.front()}, level});
    for (std::size_t i = 1; i < c.x.size(); ++i) {
        const ClassPair rise = {c.y[i] - c.y[i - 1], p.y[i] - p.y[i - 1]};
        made.rows_.push_back({c.x[i], ClassPair{c.y[i], p.y[i]}, rise / (c.x[i] - c.x[i - 1])});
    }
    made.rows_.push_back({0.0, ClassPair{c.y.back(), p.y.back()}, level});
    made.rows_.push_back({0.0, ClassPair{1.0, 1.0}, level});
    return made;
}

void StrengthRows::multiply(const float* x, bool leaveOutNan, ClassPair* products, int n) const {
    int segments[kMaxElements];
    float values[kMaxElements];
    table_->findSegments(x, segments, n);
    makeFinite(x, values, n);
    if (leaveOutNan) {
        leaveOut(x, static_cast<int>(rows_.size()) - 1, segments, n);
    }
    const Row* const rows = rows_.data();
    for (int j = 0; j < n; ++j) {
        const Row& row = rows[segments[j]];
        products[j] *= row.degree + row.slope * (static_cast<double>(values[j]) - row.right);
    }
}

}  // namespace clutter::classifier
