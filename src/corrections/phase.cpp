/*
 * Differential phase of whole scans: system offset, sign, unfolding.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>

#include "base/array.h"
#include "base/kernel.h"
#include "clutterclassifier/Cradarpro.h"

using clutter::base::cellCount;

namespace {

constexpr double kMinCorrelation = 0.9;
constexpr double kMinShareOfRays = 0.1;
constexpr int kFoldWindow = 20;
constexpr float kFoldJumpDeg = 250.0f;
constexpr float kFullCircleDeg = 360.0f;
constexpr int kJumpLanes = 64;

/* The first start, below endOfStarts, of length qualifying gates in a row; -1 without one. */
template <class Qualifies>
int firstRun(int endOfStarts, int length, Qualifies qualifies) {
    int run = 0;
    for (int g = 0; g - length + 1 < endOfStarts; ++g) {
        run = qualifies(g) ? run + 1 : 0;
        if (run >= length) {
            return g - length + 1;
        }
    }
    return -1;
}

/* Mean phase of the first run of each ray; 0 when too few rays have one. */
template <class Qualifies>
float meanOfFirstRuns(const float* phidp, int ngates, int nrays, int nwin, Qualifies qualifies) {
    if (nwin < 1 || nwin >= ngates) {
        return 0.0f;
    }
    float sum = 0.0f;
    long long count = 0;
    for (int r = 0; r < nrays; ++r) {
        const std::size_t ray = cellCount(ngates, r);
        const int start = firstRun(ngates - nwin, nwin, [&](int g) {
            return qualifies(ray + static_cast<std::size_t>(g));
        });
        if (start < 0) {
            continue;
        }
        const float* run = phidp + ray + start;
        for (int k = 0; k < nwin; ++k) {
            sum += run[k];
        }
        count += nwin;
    }
    const float counted = static_cast<float>(count);
    const bool enough = static_cast<double>(counted) >= kMinShareOfRays * nwin * nrays;
    return enough && count > 0 ? sum / counted : 0.0f;
}

/*
 * jumps[j] = the mean of gates j .. j + 19 minus the mean of gates j - 20 .. j. Each lane sums in
 * index order.
 */
CLUTTER_KERNEL void measureJumps(const float* gates, int n, float* __restrict jumps) {
    float before[kJumpLanes], after[kJumpLanes];
    for (int j = 0; j < n; ++j) {
        before[j] = after[j] = 0.0f;
    }
    for (int k = -kFoldWindow; k <= 0; ++k) {
        for (int j = 0; j < n; ++j) {
            before[j] += gates[j + k];
        }
    }
    for (int k = 0; k < kFoldWindow; ++k) {
        for (int j = 0; j < n; ++j) {
            after[j] += gates[j + k];
        }
    }
    for (int j = 0; j < n; ++j) {
        jumps[j] = after[j] / static_cast<float>(kFoldWindow) -
                   before[j] / static_cast<float>(kFoldWindow + 1);
    }
}

/* The first precipitation gate with a jump of the phase; ngates without one. */
int findFold(const float* phidp, const float* cls, int ngates) {
    float jumps[kJumpLanes];
    for (int g = kFoldWindow; g < ngates - kFoldWindow; g += kJumpLanes) {
        const int n = std::min(kJumpLanes, ngates - kFoldWindow - g);
        measureJumps(phidp + g, n, jumps);
        for (int j = 0; j < n; ++j) {
            if (cls[g + j] == 0.0f && std::fabs(jumps[j]) > kFoldJumpDeg) {
                return g + j;
            }
        }
    }
    return ngates;
}

}  // namespace

float Cradarpro::GetInitialPDP(float* phidp, float* rhohv, int ngates, int nrays, int nwin) {
    if (phidp == nullptr || rhohv == nullptr || ngates < 1 || nrays < 1) {
        return 0.0f;
    }
    // Written so that NaN qualifies.
    return meanOfFirstRuns(phidp, ngates, nrays, nwin, [rhohv](std::size_t at) {
        return !(kMinCorrelation >= static_cast<double>(rhohv[at]));
    });
}

float Cradarpro::GetInitialPDP_usingCPI(float* phidp, float* cls, int ngates, int nrays, int nwin) {
    if (phidp == nullptr || cls == nullptr || ngates < 1 || nrays < 1) {
        return 0.0f;
    }
    return meanOfFirstRuns(phidp, ngates, nrays, nwin,
                           [cls](std::size_t at) { return cls[at] == 0.0f; });
}

void Cradarpro::CorrectPDPOffset(float* phidp, int ngates, int nrays, float offset) {
    if (phidp == nullptr) {
        return;
    }
    const std::size_t n = cellCount(ngates, nrays);
    for (std::size_t i = 0; i < n; ++i) {
        phidp[i] -= offset;
    }
}

void Cradarpro::InvertPDP(float* phidp, int ngates, int nrays) {
    const std::size_t n = cellCount(ngates, nrays);
    for (std::size_t i = 0; i < n; ++i) {
        phidp[i] = -phidp[i];
    }
}

void Cradarpro::CorrectPDPFolding(float* phidp, float* cls, int ngates, int nrays) {
    if (phidp == nullptr || cls == nullptr) {
        return;
    }
    for (int r = 0; r < nrays && ngates > 0; ++r) {
        float* ray = phidp + cellCount(ngates, r);
        const float* classes = cls + cellCount(ngates, r);
        for (int g = findFold(ray, classes, ngates); g < ngates; ++g) {
            if (classes[g] == 0.0f) {
                ray[g] += kFullCircleDeg;
            }
        }
    }
}
