/*
 * Membership tables: reading them, and the segment of each of many values by counting comparisons.
 */
#include "fuzzy/functions/membership.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "base/files/regular_file.h"
#include "base/kernel.h"
#include "base/text.h"

namespace clutter::fuzzy {
namespace {

constexpr int kMaxCounted = 128;  // longer tables are searched by halving

/* The smallest float that is not below a double. */
float roundUp(double value) {
    constexpr float kLargest = std::numeric_limits<float>::max();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    if (value > static_cast<double>(kLargest)) {
        return kInfinity;
    }
    if (value < -static_cast<double>(kLargest)) {
        return std::isinf(value) ? -kInfinity : -kLargest;
    }
    const float nearest = static_cast<float>(value);
    return static_cast<double>(nearest) < value ? std::nextafter(nearest, kInfinity) : nearest;
}

constexpr int kLanes = 16;
typedef float FloatLanes __attribute__((vector_size(kLanes * sizeof(float))));
typedef int IntLanes __attribute__((vector_size(kLanes * sizeof(int))));

/* segments[j] = number of thresholds that x[j] is not below; all of them for NaN. */
CLUTTER_KERNEL void countThresholds(const float* thresholds, int count, const float* x,
                                    int* __restrict segments, int n) {
    int start = 0;
    for (; start + kLanes <= n; start += kLanes) {
        FloatLanes values;
        std::memcpy(&values, x + start, sizeof values);
        IntLanes counts = IntLanes{} + count;
        for (int k = 0; k < count; ++k) {
            counts += values < FloatLanes{} + thresholds[k];  // true is -1
        }
        std::memcpy(segments + start, &counts, sizeof counts);
    }
    for (int j = start; j < n; ++j) {
        segments[j] = 0;
        for (int k = 0; k < count; ++k) {
            segments[j] += x[j] < thresholds[k] ? 0 : 1;
        }
    }
}

struct Segments {
    const double* x;
    const double* y;
    const double* rise;
    const double* run;
    int count;
};

/* Both ends hold their degree; the order of operations is that of interpolate(). */
CLUTTER_KERNEL void followSegments(Segments table, const int* __restrict segments,
                                   const float* __restrict x, double* __restrict degrees, int n) {
    for (int j = 0; j < n; ++j) {
        const int i = segments[j] < table.count ? segments[j] : table.count - 1;
        const double inside =
            (static_cast<double>(x[j]) - table.x[i]) * table.rise[i] / table.run[i] + table.y[i];
        const bool outside = segments[j] == 0 || segments[j] == table.count;
        degrees[j] = outside ? table.y[i] : inside;
    }
}

}  // namespace

ReadResult readMembershipFile(const char* path, Points& points) {
    const auto bytes = base::readRegularFile(path);
    if (!bytes) {
        return ReadResult::kNotOpened;
    }
    base::TokenReader tokens({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    for (;;) {
        const auto x = tokens.next();
        const auto y = x ? tokens.next() : std::nullopt;
        if (!y) {
            break;
        }
        points.x.push_back(base::parseNumber(*x));
        points.y.push_back(base::parseNumber(*y));
    }
    return points.x.empty() ? ReadResult::kNoPoints : ReadResult::kRead;
}

double interpolate(const double* px, const double* py, int np, double x) {
    int i = 0;
    while (i < np && !(px[i] > x)) {
        ++i;
    }
    if (i == 0) {
        return py[0];
    }
    if (i == np) {
        return py[np - 1];
    }
    return (x - px[i]) * (py[i] - py[i - 1]) / (px[i] - px[i - 1]) + py[i];
}

Table::Table(Points points)
    : points_(std::move(points)),
      ascending_(
          std::is_sorted(points_.x.begin(), points_.x.end()) &&
          std::none_of(points_.x.begin(), points_.x.end(), [](double x) { return std::isnan(x); })),
      thresholds_(points_.x.size()),
      rise_(points_.x.size(), 0.0),
      run_(points_.x.size(), 1.0) {
    for (std::size_t i = 0; i < points_.x.size(); ++i) {
        thresholds_[i] = roundUp(points_.x[i]);
        if (i == 0) {
            continue;
        }
        rise_[i] = points_.y[i] - points_.y[i - 1];
        run_[i] = points_.x[i] - points_.x[i - 1];
    }
}

void Table::evaluate(const float* x, double* degrees, int n) const {
    if (!ascending_) {
        for (int j = 0; j < n; ++j) {
            degrees[j] = interpolate(points_.x.data(), points_.y.data(), points_.size(),
                                     static_cast<double>(x[j]));
        }
        return;
    }
    int segments[kMaxElements];
    for (int j = 0; j < n; j += kMaxElements) {
        const int count = std::min(kMaxElements, n - j);
        findSegments(x + j, segments, count);
        follow(segments, x + j, degrees + j, count);
    }
}

void Table::findSegments(const float* x, int* segments, int n) const {
    const int count = points_.size();
    if (count <= kMaxCounted) {
        countThresholds(thresholds_.data(), count, x, segments, n);
        return;
    }
    for (int j = 0; j < n; ++j) {
        const auto above =
            std::partition_point(thresholds_.begin(), thresholds_.end(),
                                 [value = x[j]](float threshold) { return !(value < threshold); });
        segments[j] = static_cast<int>(above - thresholds_.begin());
    }
}

void Table::follow(const int* segments, const float* x, double* degrees, int n) const {
    followSegments({points_.x.data(), points_.y.data(), rise_.data(), run_.data(), points_.size()},
                   segments, x, degrees, n);
}

}  // namespace clutter::fuzzy
