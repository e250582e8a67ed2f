/*
 * Cells of the log ratio of two degrees. Each cell's range follows from its ends and the corners of
 * the tables within it, since the ratio is monotone in between.
 */
#include "fuzzy/engine/ratio_cells.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/kernel.h"

namespace clutter::fuzzy {
namespace {

constexpr double kMinDegree = 0x1p-100;  // products of as many stay normal numbers
constexpr double kMaxDegree = 0x1p100;
constexpr double kMaxRatio = 1e30;      // a normal number in single precision, and so its inverse
constexpr double kCancellation = 1e-8;  // of a table's largest degree: below, rounding could matter
constexpr float kMaxHalf = 0.125f;      // of a cell's log ratio; wider cells decide nothing
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

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

/* The smallest degree that dominates its own rounding error. */
double smallestTrusted(const Term& term) {
    double smallest = kMinDegree;
    if (term.shape != Shape::kTable) {
        return smallest;
    }
    for (const double y : term.table->points().y) {
        smallest = std::max(smallest, kCancellation * std::abs(y));
    }
    return smallest;
}

/* The log ratio of the degrees of one input in the two rules; NaN where a degree is out of bounds.
 */
class LogRatio {
  public:
    LogRatio(const Term& rule0, const Term& rule1)
        : terms_{&rule0, &rule1}, smallest_{smallestTrusted(rule0), smallestTrusted(rule1)} {}

    std::vector<float> at(const std::vector<float>& x) const {
        const std::size_t n = x.size();
        std::vector<double> degrees[2];
        for (int rule = 0; rule < 2; ++rule) {
            degrees[rule].resize(n);
            evaluateTerm(*terms_[rule], x.data(), degrees[rule].data(), static_cast<int>(n));
        }
        std::vector<float> ratios(n);
        for (std::size_t j = 0; j < n; ++j) {
            const double ratio = degrees[0][j] / degrees[1][j];
            const bool trusted = trust(0, degrees[0][j]) && trust(1, degrees[1][j]) &&
                                 ratio >= 1.0 / kMaxRatio && ratio <= kMaxRatio;
            ratios[j] = trusted ? std::log(static_cast<float>(ratio)) : kNan;
        }
        return ratios;
    }

    /* The values beside each point of the tables, sorted: between two of them the ratio is
     * monotone. */
    std::vector<float> corners() const {
        std::vector<float> corners;
        for (const Term* term : terms_) {
            if (term->shape == Shape::kSame || term->shape == Shape::kComplement) {
                corners.insert(corners.end(), {0.0f, 1.0f});
            }
            if (term->shape != Shape::kTable) {
                continue;
            }
            for (const float threshold : term->table->thresholds()) {
                corners.insert(corners.end(), {std::nextafter(threshold, -kInfinity), threshold});
            }
        }
        std::sort(corners.begin(), corners.end());
        return corners;
    }

  private:
    bool trust(int rule, double degree) const {
        return degree >= smallest_[rule] && degree <= kMaxDegree;
    }

    const Term* terms_[2];
    double smallest_[2];
};

/*
 * The log ratio over an interval. Between corners both degrees are straight lines, and the ratio of
 * two straight lines is monotone: its range is that of the ends and the corners.
 */
class RatioRange {
  public:
    void add(float logRatio) {
        low_ = std::min(low_, logRatio);
        high_ = std::max(high_, logRatio);
        broken_ = broken_ || !(logRatio == logRatio);
    }

    bool narrow() const { return !broken_ && half() <= kMaxHalf; }
    float half() const { return 0.5f * (high_ - low_); }
    float middle() const { return 0.5f * (high_ + low_); }

  private:
    float low_ = kInfinity;
    float high_ = -kInfinity;
    bool broken_ = false;
};

/* No kernel: vector gathers are slower than plain loads. */
void addCells(const int* __restrict found, const float* __restrict table, float* __restrict scores,
              int n) {
    for (int j = 0; j < n; ++j) {
        scores[j] += table[found[j]];
    }
}

}  // namespace

std::shared_ptr<const RatioCells> RatioCells::make(const Term& rule0, const Term& rule1) {
    if (!supported(rule0) || !supported(rule1)) {
        return nullptr;
    }
    const std::shared_ptr<RatioCells> cells(new RatioCells);
    return cells->fill(rule0, rule1) ? cells : nullptr;
}

bool RatioCells::fill(const Term& rule0, const Term& rule1) {
    const LogRatio logRatio(rule0, rule1);
    const std::vector<float> corners = logRatio.corners();
    if (!grid_.fit(corners, kCells)) {
        return false;
    }

    // Ends of the cells, outward, then NaN.
    std::vector<float> ends;
    for (int c = 0; c < kCells; ++c) {
        ends.push_back(grid_.lowEnd(c));
        ends.push_back(grid_.highEnd(c));
    }
    ends.push_back(kNan);
    const std::vector<float> atEnds = logRatio.at(ends);
    const std::vector<float> atCorners = logRatio.at(corners);

    for (std::size_t c = 0; c < kCells; ++c) {
        RatioRange range;
        range.add(atEnds[2 * c]);
        range.add(atEnds[2 * c + 1]);
        const auto first = std::lower_bound(corners.begin(), corners.end(), ends[2 * c]);
        for (auto at = first; at != corners.end() && *at <= ends[2 * c + 1]; ++at) {
            range.add(atCorners[static_cast<std::size_t>(at - corners.begin())]);
        }
        cells_.push_back(range.narrow() ? range.middle() : kNan);
        if (range.narrow()) {
            widestHalf_ = std::max(widestHalf_, range.half());
        }
    }
    cells_.push_back(atEnds.back());
    return true;
}

void RatioCells::add(const float* x, float* scores, int n) const {
    int found[kMaxElements];
    grid_.find(x, found, n);
    addCells(found, cells_.data(), scores, n);
}

}  // namespace clutter::fuzzy
