/*
 * Means in blocks of gates; gates whose last bit is uncertain, and huge windows, one by one.
 */
#include "dsp/windows/polar_smoothing.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/kernel.h"
#include "dsp/windows/decibel_mean.h"

namespace clutter::dsp {
namespace {

using base::kBlockLanes;

/* For larger windows, counts could exceed the exact range of float and rows would be mostly
 * padding. */
constexpr std::int64_t kMaxKernelMembers = 1 << 20;

/* sums[j] += cells[j] + ... + cells[j + windowGates - 1], one after the other. */
CLUTTER_KERNEL void addWindow(const float* cells, int windowGates, int n, float* __restrict sums) {
    for (int d = 0; d < windowGates; ++d) {
        for (int j = 0; j < n; ++j) {
            sums[j] += cells[j + d];
        }
    }
}

CLUTTER_KERNEL void addWindow(const double* cells, int windowGates, int n,
                              double* __restrict sums) {
    for (int d = 0; d < windowGates; ++d) {
        for (int j = 0; j < n; ++j) {
            sums[j] += cells[j + d];
        }
    }
}

CLUTTER_KERNEL void divideOrKeep(const float* counts, const float* own, int n,
                                 float* __restrict sums) {
    for (int j = 0; j < n; ++j) {
        sums[j] = counts[j] != 0.0f ? sums[j] / counts[j] : own[j];
    }
}

/* Sums the windows of gates gate .. gate + n - 1 in ray order. sums has kBlockLanes elements. */
template <class Cell>
void sumBlock(const SmoothingRows& rows, std::vector<Cell> SmoothingRow::*cells, int gate, int n,
              Cell start, Cell* sums) {
    std::fill_n(sums, kBlockLanes, start);
    const int windowGates = static_cast<int>(rows.input().half.windowGates());
    for (std::int64_t k = 0; k < rows.windowRays(); ++k) {
        const SmoothingRow& row = rows.row(k);
        if (row.any) {
            addWindow((row.*cells).data() + gate, windowGates, n, sums);
        }
    }
}

/* Calls visit(value) for every unmasked member of a gate's window, in window order. */
template <class Visit>
void visitMembers(const SmoothingRows& rows, int gate, Visit visit) {
    const auto [halfGates, halfRays] = rows.input().half;
    const std::int64_t last = rows.input().shape.ngates - 1;
    for (std::int64_t k = 0; k < rows.windowRays(); ++k) {
        const SmoothingRow& row = rows.row(k);
        if (!row.any) {
            continue;
        }
        for (std::int64_t d = -halfGates; d <= halfGates; ++d) {
            const std::int64_t member = std::clamp<std::int64_t>(gate + d, 0, last) + rows.pad();
            if (row.lanes[static_cast<std::size_t>(member)] == 0.0f) {
                continue;
            }
            visit(row.values[static_cast<std::size_t>(member)]);
        }
    }
}

/* The definitions, gate by gate. */
float plainLinearMean(const SmoothingRows& rows, int gate, float own) {
    float sum = 0.0f;
    std::int64_t count = 0;
    visitMembers(rows, gate, [&](float value) {
        sum += value;
        ++count;
    });
    return count > 0 ? sum / static_cast<float>(count) : own;
}

float plainDecibelMean(const SmoothingRows& rows, int gate, float own) {
    double sum = kMinPower;
    std::int64_t count = 0;
    float last = 0.0f;  // neighbours are often equal: fill values, steps of the recording
    double power = 1.0;
    visitMembers(rows, gate, [&](float value) {
        if (value != last) {
            power = std::pow(10.0, 0.1 * static_cast<double>(value));
        }
        last = value;
        sum += power;
        ++count;
    });
    if (count == 0) {
        return own;
    }
    return static_cast<float>(10.0 * std::log10(sum / static_cast<double>(count)));
}

void smoothLinearBlock(const SmoothingRows& rows, int gate, int n, const float* own, float* out) {
    float sums[kBlockLanes];
    float counts[kBlockLanes];
    sumBlock(rows, &SmoothingRow::lanes, gate, n, 0.0f, counts);
    sumBlock(rows, &SmoothingRow::values, gate, n, 0.0f, sums);
    divideOrKeep(counts, own, n, sums);
    std::copy_n(sums, n, out);
}

void smoothDecibelBlock(const SmoothingRows& rows, int gate, int n, const float* own, float* out) {
    double sums[kBlockLanes];
    float counts[kBlockLanes];
    float means[kBlockLanes];
    std::int32_t uncertain[kBlockLanes];
    sumBlock(rows, &SmoothingRow::lanes, gate, n, 0.0f, counts);
    const auto present = [](float count) { return count != 0.0f; };
    if (std::none_of(counts, counts + n, present)) {
        std::copy_n(own, n, out);
        return;
    }
    sumBlock(rows, &SmoothingRow::powers, gate, n, kMinPower, sums);
    const double margin = roundingMargin(rows.input().half.members());
    const bool anyUncertain = decibelsOf(sums, counts, own, margin, means, uncertain, n);
    for (int j = 0; anyUncertain && j < n; ++j) {
        if (uncertain[j] != 0) {
            means[j] = plainDecibelMean(rows, gate + j, own[j]);
        }
    }
    std::copy_n(means, n, out);
}

using BlockSmoother = void (*)(const SmoothingRows&, int, int, const float*, float*);
using GateSmoother = float (*)(const SmoothingRows&, int, float);

void smooth(const SmoothingInput& input, float* out, SmoothingRows::PowerKernel powers,
            BlockSmoother smoothBlock) {
    const PolarShape shape = input.shape;
    SmoothingRows rows(input, input.half.gates, powers);
    for (int r = 0; r < shape.nrays; ++r) {
        rows.moveTo(r);
        const float* own = input.values + shape.offset(r);
        float* target = out + shape.offset(r);
        if (!rows.any()) {
            std::copy_n(own, shape.ngates, target);
            continue;
        }
        for (int g = 0; g < shape.ngates; g += kBlockLanes) {
            smoothBlock(rows, g, std::min(kBlockLanes, shape.ngates - g), own + g, target + g);
        }
    }
}

/* For windows far larger than any scan. */
void smoothByGate(const SmoothingInput& input, float* out, GateSmoother smoothGate) {
    const PolarShape shape = input.shape;
    SmoothingRows rows(input, 0, nullptr);
    for (int r = 0; r < shape.nrays; ++r) {
        rows.moveTo(r);
        const float* own = input.values + shape.offset(r);
        float* target = out + shape.offset(r);
        for (int g = 0; g < shape.ngates; ++g) {
            target[g] = smoothGate(rows, g, own[g]);
        }
    }
}

}  // namespace

void smoothLinear(const SmoothingInput& input, float* out) {
    if (input.half.members() > kMaxKernelMembers) {
        smoothByGate(input, out, plainLinearMean);
    } else {
        smooth(input, out, nullptr, smoothLinearBlock);
    }
}

void smoothDecibels(const SmoothingInput& input, float* out) {
    if (input.half.members() > kMaxKernelMembers) {
        smoothByGate(input, out, plainDecibelMean);
    } else {
        smooth(input, out, powersOf, smoothDecibelBlock);
    }
}

}  // namespace clutter::dsp
