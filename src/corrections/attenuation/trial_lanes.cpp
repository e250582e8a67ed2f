/*
 * Powers by a polynomial, and the step from gate to gate, for all lanes at once.
 */
#include "corrections/attenuation/trial_lanes.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "base/bit_cast.h"
#include "base/kernel.h"
#include "base/power_series.h"

namespace clutter::corrections {
namespace {

/* 2^f for f in [-0.5, 0.5]: the polynomial of least relative error. */
constexpr double kPower[] = {1.0000000005541687,    0.6931472057372476,   0.24022646890590554,
                             0.05550328777000997,   0.009618488961886162, 0.0013399931207221938,
                             0.00015345810704741648};
using base::kMantissaBits;
using base::kRounder;

inline double powerOfTwo(double x) {
    const double shifted = x + kRounder;
    const double f = x - (shifted - kRounder);
    double p = kPower[6];
    p = p * f + kPower[5];
    p = p * f + kPower[4];
    p = p * f + kPower[3];
    p = p * f + kPower[2];
    p = p * f + kPower[1];
    p = p * f + kPower[0];
    const std::uint64_t whole = base::bitCast<std::uint64_t>(shifted) << kMantissaBits;
    return base::bitCast<double>(base::bitCast<std::uint64_t>(p) + whole);
}

/* Advances a group from one gate to another. */
template <bool kSharedPower, bool kForwardSolution>
inline void walkGates(const double* powers, const Gates& gates, const Terms* terms, int from,
                      int to, Walk& walk) {
    const double* measured = gates.phase.data();
    const GateKind* kind = gates.kind.data();
    Walk w = walk;
    for (int g = from; g < to; ++g) {
        const Terms& t = terms[index(kind[g])];
        const double* row = powers + static_cast<std::ptrdiff_t>(g) * (kSharedPower ? 1 : kLanes);
        for (int l = 0; l < kLanes; ++l) {
            const double power = kSharedPower ? row[0] : row[l];
            const double upTo = w.before[l] + t.weight[l] * power;
            const double sum = kForwardSolution ? upTo : w.before[l];
            const double denominator = t.head[l] - t.slope[l] * sum;
            const double step = t.rate[l] * power / denominator;
            w.before[l] = upTo;
            w.phase[l] += step;
            w.cost[l] += std::fabs(w.phase[l] - measured[g]);
            if (kForwardSolution) {
                const double size = std::fabs(denominator);
                w.reach[l] += std::fabs(step);
                w.nearest[l] = size < w.nearest[l] ? size : w.nearest[l];
            }
        }
    }
    walk = w;
}

}  // namespace

CLUTTER_KERNEL void approximatePowers(const double* x, double* __restrict powers, int n) {
    for (int j = 0; j < n; ++j) {
        powers[j] = powerOfTwo(x[j]);
    }
}

CLUTTER_KERNEL void raiseGates(const Gates& gates, const Terms* terms, int from, int to,
                               double* __restrict powers) {
    const double* log2z = gates.log2z.data();
    const GateKind* kind = gates.kind.data();
    for (int g = from; g < to; ++g) {
        const Terms& t = terms[index(kind[g])];
        double* row = powers + static_cast<std::ptrdiff_t>(g) * kLanes;
        for (int l = 0; l < kLanes; ++l) {
            row[l] = powerOfTwo(t.exponent[l] * log2z[g]);
        }
    }
}

CLUTTER_KERNEL void sumGates(const double* powers, const Gates& gates, const Terms* terms,
                             double* __restrict total) {
    const GateKind* kind = gates.kind.data();
    const int n = gates.count();
    for (int l = 0; l < kLanes; ++l) {
        total[l] = 0.0;
    }
    for (int g = 0; g < n; ++g) {
        const Terms& t = terms[index(kind[g])];
        const double* row = powers + static_cast<std::ptrdiff_t>(g) * kLanes;
        for (int l = 0; l < kLanes; ++l) {
            total[l] += t.weight[l] * row[l];
        }
    }
}

CLUTTER_KERNEL void walkShared(const double* powers, const Gates& gates, const Terms* terms,
                               int from, int to, Walk& walk) {
    walkGates<true, false>(powers, gates, terms, from, to, walk);
}

CLUTTER_KERNEL void walkBackwardSolution(const double* powers, const Gates& gates,
                                         const Terms* terms, int from, int to, Walk& walk) {
    walkGates<false, false>(powers, gates, terms, from, to, walk);
}

CLUTTER_KERNEL void walkForwardSolution(const double* powers, const Gates& gates,
                                        const Terms* terms, int from, int to, Walk& walk) {
    walkGates<false, true>(powers, gates, terms, from, to, walk);
}

}  // namespace clutter::corrections
