/*
 * Between two corners of the tables a ratio of degrees is monotone: a walk from corner to corner
 * finds the interval that holds the turning point, and halving finds the point.
 */
#include "classifier/turning_point.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>

#include "classifier/evidence/log_ratio.h"

namespace clutter::classifier {
namespace {

constexpr double kRounding = 1e-6;  // of the numbers that a margin is the sum of

}  // namespace

double TurningPoint::find() const {
    if (std::isnan(value_)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::vector<float> corners = findCorners();
    const auto above = std::upper_bound(corners.begin(), corners.end(), value_);
    const double up = search(above, corners.end());
    const auto below = std::lower_bound(corners.begin(), corners.end(), value_);
    const double down =
        search(std::make_reverse_iterator(below), std::make_reverse_iterator(corners.begin()));
    if (std::isnan(down)) {
        return up;
    }
    const auto value = static_cast<double>(value_);
    return up - value < value - down ? up : down;  // also where up is NaN
}

/* Whether the verdict is the other one, beyond all rounding of the margin. */
bool TurningPoint::isTurned(float x) const {
    const double precipitation = functions_.degree(kPrecipitationClass, x);
    const auto favours = [&](const Balance& kind, double sign) {
        const double share = logRatio(kind.precipitation * precipitation,
                                      kind.clutter * functions_.degree(kind.clutterClass, x));
        const double limited = share < -kind.limit ? -kind.limit : std::min(share, kind.limit);
        const double margin = sign * (kind.rest + kind.weight * limited);
        const double rounding = kRounding * (std::fabs(kind.rest) + std::fabs(limited));
        return margin > (std::isinf(margin) ? 0.0 : rounding);
    };
    if (isPrecipitation_) {
        return std::any_of(kinds_.begin(), kinds_.end(),
                           [&](const Balance& kind) { return favours(kind, -1.0); });
    }
    return std::all_of(kinds_.begin(), kinds_.end(),
                       [&](const Balance& kind) { return favours(kind, 1.0); });
}

/* The values on both sides of each point of the tables, sorted. */
std::vector<float> TurningPoint::findCorners() const {
    std::vector<float> corners;
    for (const auto& table : functions_.tables) {
        if (table == nullptr) {
            continue;
        }
        for (const float threshold : table->thresholds()) {
            corners.push_back(std::nextafter(threshold, -HUGE_VALF));
            corners.push_back(threshold);
        }
    }
    if (corners.empty()) {
        corners = {0.0f, 1.0f};  // a degree itself
    }
    std::sort(corners.begin(), corners.end());
    return corners;
}

/* Walks away from the value, corner by corner. */
template <class Iterator>
double TurningPoint::search(Iterator next, Iterator end) const {
    float kept = value_;
    for (; next != end; ++next) {
        if (isTurned(*next)) {
            return halve(kept, *next);
        }
        kept = *next;
    }
    return std::numeric_limits<double>::quiet_NaN();
}

/* The first value from kept to turned that turns the verdict. */
double TurningPoint::halve(float kept, float turned) const {
    for (;;) {
        const float middle = 0.5f * kept + 0.5f * turned;
        if (middle == kept || middle == turned) {
            return static_cast<double>(turned);
        }
        (isTurned(middle) ? turned : kept) = middle;
    }
}

}  // namespace clutter::classifier
