/*
 * Plain versions of operations that the polar data reader needs.
 */
#include <algorithm>
#include <cstddef>
#include <utility>

#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/Cradarpro.h"

void CDSP::Sort(float* in, float* out, int* index, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = in[i];
        index[i] = i;
    }
    for (int i = 0; i < n; ++i) {
        for (int j = i + 1; j < n; ++j) {
            if (!(out[j] < out[i])) continue;
            std::swap(out[i], out[j]);
            std::swap(index[i], index[j]);
        }
    }
}

float Cradarpro::GetInitialPDP(float* phidp, float* rhohv, int ngates, int nrays, int nwin) {
    if (phidp == nullptr || rhohv == nullptr || ngates < 1 || nrays < 1) return 0.0f;
    float sum = 0.0f;
    int count = 0;
    for (int r = 0; r < nrays; ++r) {
        const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(r) * ngates;
        for (int g = 0; g < ngates - nwin; ++g) {
            const float* rho = rhohv + row + g;
            if (std::any_of(rho, rho + nwin, [](float v) { return 0.9 >= v; })) continue;
            for (int k = 0; k < nwin; ++k) sum += phidp[row + g + k];
            count += nwin;
            break;
        }
    }
    const bool enough = static_cast<float>(count) >= 0.1 * nwin * nrays;
    return enough && count > 0 ? sum / static_cast<float>(count) : 0.0f;
}

void Cradarpro::CorrectPDPOffset(float* phidp, int ngates, int nrays, float offset) {
    if (phidp == nullptr || ngates < 1 || nrays < 1) return;
    const std::ptrdiff_t n = static_cast<std::ptrdiff_t>(ngates) * nrays;
    for (std::ptrdiff_t i = 0; i < n; ++i) phidp[i] -= offset;
}
