/*
 * Cells are found in single precision, so that neighbours overlap by a little.
 */
#include "fuzzy/engine/cell_grid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>

#include "base/kernel.h"

namespace clutter::fuzzy {
namespace {

constexpr double kCellOverlap = 1e-3;  // of a cell: the index is computed in single precision
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Interval {
    float low;
    float high;
};

/* Where the sorted corners crowd: cells are not wasted on a far tail. */
Interval coreOf(const std::vector<float>& corners) {
    const std::size_t n = corners.size();
    const float middle = corners[n / 2];
    const float reach = 16.0f * (corners[3 * n / 4] - corners[n / 4]);
    if (!(reach > 0.0f)) {
        return {corners.front(), corners.back()};
    }
    const auto low = std::lower_bound(corners.begin(), corners.end(), middle - reach);
    const auto high = std::upper_bound(corners.begin(), corners.end(), middle + reach);
    return {*low, *std::prev(high)};
}

/* The comparisons send NaN to cell 0 first, so that the conversion is defined; it then gets its
 * own. */
CLUTTER_KERNEL void findCells(const float* __restrict x, float origin, float cellsPerUnit,
                              int cells, int* __restrict found, int n) {
    const float last = static_cast<float>(cells - 1);
    for (int j = 0; j < n; ++j) {
        float position = (x[j] - origin) * cellsPerUnit;
        position = position > 0.0f ? position : 0.0f;
        position = position < last ? position : last;
        const int cell = static_cast<int>(position);
        found[j] = x[j] == x[j] ? cell : cells;
    }
}

}  // namespace

bool CellGrid::fit(const std::vector<float>& corners, int cells) {
    const Interval core = coreOf(corners);
    cells_ = cells;
    origin_ = core.low;
    cellsPerUnit_ = static_cast<float>(cells) / (core.high - core.low);
    return std::isfinite(origin_) && std::isfinite(cellsPerUnit_) && cellsPerUnit_ > 0.0f;
}

void CellGrid::find(const float* x, int* found, int n) const {
    findCells(x, origin_, cellsPerUnit_, cells_, found, n);
}

float CellGrid::edge(double cells) const {
    return static_cast<float>(static_cast<double>(origin_) +
                              cells / static_cast<double>(cellsPerUnit_));
}

float CellGrid::lowEnd(int cell) const {
    return cell == 0 ? -kInfinity : std::nextafter(edge(cell - kCellOverlap), -kInfinity);
}

float CellGrid::highEnd(int cell) const {
    const bool last = cell == cells_ - 1;
    return last ? kInfinity : std::nextafter(edge(cell + 1 + kCellOverlap), kInfinity);
}

}  // namespace clutter::fuzzy
