/*
 * Gaps in the differential phase of one ray.
 */
#include <algorithm>
#include <cstddef>
#include <vector>

#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr double kNoPhase = -99999.0;

bool isValid(double mask) {
    return mask == 0.0;
}

/* Fills the gaps of one ray from the edges of its valid stretches. Bounds have 64 bits, since hosts
 * may pass any lengths. */
struct GapFiller {
    const double* in;
    const double* mask;
    long long n;
    long long fill;
    long long average;
    std::vector<double> filled;

    bool startsStretch(long long g) const { return !isValid(mask[g - 1]) && isValid(mask[g]); }
    bool endsStretch(long long g) const { return !isValid(mask[g + 1]) && isValid(mask[g]); }

    void fillBefore(long long g) {
        const long long end = std::min(g + average, n);
        double sum = 0.0;
        for (long long k = g; k < end; ++k) {
            sum += in[k];
        }
        const double mean = sum / static_cast<double>(end - g);
        const long long stop = std::max(g - fill, 0LL);
        for (long long k = g - 1; k > stop && !isValid(mask[k]); --k) {
            put(k, mean);
        }
    }

    void fillAfter(long long g) {
        const long long first = std::max(g - average, 0LL);
        double sum = 0.0;
        for (long long k = g; k > first; --k) {
            sum += in[k];
        }
        const double mean = sum / static_cast<double>(g - first);
        const long long stop = std::min(g + fill, n);
        for (long long k = g + 1; k < stop && !isValid(mask[k]); ++k) {
            put(k, mean);
        }
    }

    void put(long long k, double value) { filled[static_cast<std::size_t>(k)] = value; }
};

/* The first valid gate from g on; n without one. */
int nextValid(const double* mask, int n, int g) {
    while (g < n && !isValid(mask[g])) {
        ++g;
    }
    return g;
}

}  // namespace

void Cradarpro::CompletePhidp(double* in, double* out, int n, int nfill, int navg, double* mask) {
    if (n < 1) {
        return;
    }
    GapFiller gaps{in, mask, n, nfill, navg, std::vector<double>(in, in + n)};
    for (int g = 1; g < n - 1 && navg > 0; ++g) {
        if (gaps.startsStretch(g)) {
            gaps.fillBefore(g);
        } else if (gaps.endsStretch(g)) {
            gaps.fillAfter(g);
        }
    }
    std::copy(gaps.filled.begin(), gaps.filled.end(), out);
}

int Cradarpro::interpPDP(const double* in, const double* mask, int n, double* out) {
    if (n < 1) {
        return 0;
    }
    if (out != in) {
        std::copy(in, in + n, out);
    }
    double previous = kNoPhase;
    int previousGate = -1;
    for (int g = 0; g < n; ++g) {
        if (!isValid(mask[g])) {
            if (previous == kNoPhase) {
                out[g] = 0.0;
                continue;
            }
            const int next = nextValid(mask, n, g + 1);
            if (next == n) {
                break;  // a trailing gap keeps its values
            }
            // The first gate of the gap keeps its value.
            for (int j = g + 1; j < next; ++j) {
                out[j] =
                    previous + (in[next] - previous) * (j - previousGate) / (next - previousGate);
            }
            g = next;
        }
        previous = in[g];
        previousGate = g;
    }
    return 0;
}
