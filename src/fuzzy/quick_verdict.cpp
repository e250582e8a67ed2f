#include "fuzzy/quick_verdict.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/kernel.h"
#include "fuzzy/engine.h"

namespace clutter::fuzzy {
namespace {

constexpr double kSmallestDegree = 0x1p-100;  // products of nine stay normal numbers
constexpr double kLargestDegree = 0x1p100;
constexpr double kCancellation = 1e-8;  // of a table's largest degree: below, rounding could matter
constexpr double kWidestHalf = 0.125;   // of a cell's log ratio; wider cells settle nothing
constexpr double kRounding = 1e-3;     // far above what sums of floats and products of doubles lose
constexpr double kCellOverlap = 1e-3;  // of a cell: the index is computed in single precision
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

bool allFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool supported(const Term& term) {
    switch (term.shape) {
        case Shape::kOnes:
        case Shape::kSame:
        case Shape::kComplement:
            return true;
        case Shape::kTable:
            return term.table->ascending() && allFinite(term.table->points().x) &&
                   allFinite(term.table->points().y);
        default:
            return false;
    }
}

/* The degrees of one input in one rule, with what is too small to be trusted left out. */
class DegreeCurve {
  public:
    explicit DegreeCurve(const Term& term) : term_(term), smallest_(kSmallestDegree) {
        if (term.shape != Shape::kTable) return;
        for (const double y : term.table->points().y) {
            smallest_ = std::max(smallest_, kCancellation * std::abs(y));
        }
    }

    /* NaN where the degree is out of bounds. */
    double at(double x) const { return trusted(degreeAt(x)); }

    double atNan() const {
        if (term_.shape == Shape::kOnes) return 1.0;
        return term_.shape == Shape::kTable ? trusted(term_.table->points().y.back()) : kNan;
    }

    void addCorners(std::vector<double>& corners) const {
        if (term_.shape == Shape::kTable) {
            const std::vector<double>& x = term_.table->points().x;
            corners.insert(corners.end(), x.begin(), x.end());
        } else if (term_.shape != Shape::kOnes) {
            corners.insert(corners.end(), {0.0, 1.0});
        }
    }

  private:
    double degreeAt(double x) const {
        switch (term_.shape) {
            case Shape::kSame:
                return x;
            case Shape::kComplement:
                return 1.0 - x;
            case Shape::kTable:
                return term_.table->at(x);
            default:
                return 1.0;
        }
    }

    double trusted(double degree) const {
        return degree >= smallest_ && degree <= kLargestDegree ? degree : kNan;
    }

    const Term& term_;
    double smallest_;
};

/*
 * The log ratio over an interval. Between corners both degrees are straight lines, and the ratio of
 * two straight lines is monotone: its range is that of the ends and the corners.
 */
class RatioRange {
  public:
    void add(double logRatio) {
        // A NaN must stay.
        low_ = logRatio >= low_ ? low_ : logRatio;
        high_ = logRatio <= high_ ? high_ : logRatio;
        broken_ = broken_ || !(logRatio == logRatio);
    }

    bool narrow() const { return !broken_ && half() <= kWidestHalf; }
    double half() const { return 0.5 * (high_ - low_); }
    double middle() const { return 0.5 * (high_ + low_); }

  private:
    double low_ = kInfinity;
    double high_ = -kInfinity;
    bool broken_ = false;
};

struct Interval {
    double low;
    double high;
};

/* Where the sorted corners crowd: cells are not wasted on a far tail. */
Interval coreOf(const std::vector<double>& corners) {
    const std::size_t n = corners.size();
    const double middle = corners[n / 2];
    const double reach = 8.0 * (corners[3 * n / 4] - corners[n / 4]);
    if (!(reach > 0.0)) return {corners.front(), corners.back()};
    const auto low = std::lower_bound(corners.begin(), corners.end(), middle - reach);
    const auto high = std::upper_bound(corners.begin(), corners.end(), middle + reach);
    return {*low, *std::prev(high)};
}

struct Grid {
    float origin;
    float cellsPerUnit;
};

/* The comparisons send NaN to cell 0 first, so that the conversion is defined; it then gets its
 * own. */
CLUTTER_KERNEL void findCells(const float* __restrict x, Grid grid, int cells,
                              int* __restrict found, int n) {
    const float last = static_cast<float>(cells - 1);
    for (int j = 0; j < n; ++j) {
        float position = (x[j] - grid.origin) * grid.cellsPerUnit;
        position = position > 0.0f ? position : 0.0f;
        position = position < last ? position : last;
        const int cell = static_cast<int>(position);
        found[j] = x[j] == x[j] ? cell : cells;
    }
}

/* No kernel: vector gathers are slower than plain loads. */
void addCells(const int* __restrict found, const float* __restrict table, float* __restrict scores,
              int n) {
    for (int j = 0; j < n; ++j) scores[j] += table[found[j]];
}

CLUTTER_KERNEL void settle(float tolerance, float* scores, int n) {
    for (int j = 0; j < n; ++j) {
        const bool settled = scores[j] > tolerance || scores[j] < -tolerance;
        scores[j] = settled ? scores[j] : 0.0f;
    }
}

}  // namespace

std::unique_ptr<QuickVerdict> QuickVerdict::make(const RuleBase& rules) {
    if (!rules.product_ || rules.nrules_ != 2) return nullptr;
    auto quick = std::unique_ptr<QuickVerdict>(new QuickVerdict);
    quick->tolerance_ = kRounding;
    for (int i = 0; i < rules.ninputs_; ++i) {
        const Term& rule0 = rules.term(0, i);
        const Term& rule1 = rules.term(1, i);
        if (!supported(rule0) || !supported(rule1)) return nullptr;
        if (rule0.shape == Shape::kOnes && rule1.shape == Shape::kOnes) continue;
        if (!quick->addInput(i, rule0, rule1)) return nullptr;
    }
    return quick->ratios_.empty() ? nullptr : std::move(quick);
}

bool QuickVerdict::addInput(int input, const Term& rule0, const Term& rule1) {
    const DegreeCurve curve0(rule0), curve1(rule1);
    const auto logRatio = [&](double x) { return std::log(curve0.at(x) / curve1.at(x)); };
    std::vector<double> corners;
    curve0.addCorners(corners);
    curve1.addCorners(corners);
    std::sort(corners.begin(), corners.end());
    const Interval core = coreOf(corners);
    Ratio ratio;
    ratio.input = input;
    ratio.origin = static_cast<float>(core.low);
    ratio.cellsPerUnit = static_cast<float>(kCells / (core.high - core.low));
    if (!std::isfinite(ratio.origin) || !std::isfinite(ratio.cellsPerUnit)) return false;
    if (!(ratio.cellsPerUnit > 0.0f)) return false;

    const double cellSize = 1.0 / static_cast<double>(ratio.cellsPerUnit);
    const auto edge = [&](double cells) { return ratio.origin + cells * cellSize; };
    double widest = 0.0;
    for (int c = 0; c < kCells; ++c) {
        const Interval x{c == 0 ? -kInfinity : edge(c - kCellOverlap),
                         c == kCells - 1 ? kInfinity : edge(c + 1 + kCellOverlap)};
        RatioRange range;
        range.add(logRatio(x.low));
        range.add(logRatio(x.high));
        auto corner = std::lower_bound(corners.begin(), corners.end(), x.low);
        for (; corner != corners.end() && *corner <= x.high; ++corner) {
            range.add(logRatio(std::nextafter(*corner, -kInfinity)));  // a table may jump
            range.add(logRatio(*corner));
        }
        ratio.cells.push_back(static_cast<float>(range.narrow() ? range.middle() : kNan));
        if (range.narrow()) widest = std::max(widest, range.half());
    }
    ratio.cells.push_back(static_cast<float>(std::log(curve0.atNan() / curve1.atNan())));
    tolerance_ += static_cast<float>(widest);
    ratios_.push_back(std::move(ratio));
    return true;
}

void QuickVerdict::score(const float* const* inputs, int start, int n, float* scores) const {
    int found[kMost];
    std::fill_n(scores, n, 0.0f);
    for (const Ratio& ratio : ratios_) {
        findCells(inputs[ratio.input] + start, {ratio.origin, ratio.cellsPerUnit}, kCells, found,
                  n);
        addCells(found, ratio.cells.data(), scores, n);
    }
    settle(tolerance_, scores, n);
}

}  // namespace clutter::fuzzy
