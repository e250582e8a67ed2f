/*
 * Hot spots: stretches of heavy precipitation that attenuate more than their surroundings.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "clutterclassifier/Cradarpro.h"

namespace {

constexpr double kMinDbz = 45.0;
constexpr double kMinCorrelation = 0.7;
constexpr double kMinLengthKm = 2.0;
constexpr double kMinPhaseRiseDeg = 20.0;
constexpr int kMaxRecorded = 10;
constexpr int kRecordValues = 3;  // first gate, last gate, phase rise
constexpr int kRecordStride = 4;
constexpr int kSpotValues = 40;
static_assert(1 + (kMaxRecorded - 1) * kRecordStride + kRecordValues <= kSpotValues);

}  // namespace

int Cradarpro::findHotSpot(const double* phidp, const double* z, const double* rhohv,
                           const double* mask, double dr, int n, double* flag, double* spots) {
    if (n > 0) {
        std::fill(flag, flag + n, 0.0);
    }
    std::fill(spots, spots + kSpotValues, 0.0);
    const auto isHot = [&](int g) {
        return mask[g] == 0.0 && rhohv[g] >= kMinCorrelation && 10.0 * std::log10(z[g]) >= kMinDbz;
    };
    int count = 0;
    for (int g = 0; g < n; ++g) {
        if (!isHot(g)) {
            continue;
        }
        const int first = g;
        while (g + 1 < n && isHot(g + 1)) {
            ++g;
        }
        const double rise = phidp[g] - phidp[first];
        if (!((g - first) * dr > kMinLengthKm) || !(rise > kMinPhaseRiseDeg)) {
            continue;
        }
        if (count < kMaxRecorded) {
            double* spot = spots + 1 + static_cast<std::ptrdiff_t>(count) * kRecordStride;
            const double record[kRecordValues] = {static_cast<double>(first),
                                                  static_cast<double>(g), rise};
            std::copy_n(record, kRecordValues, spot);
        }
        std::fill(flag + first, flag + g + 1, 1.0);
        ++count;
    }
    spots[0] = count;
    return count;
}
