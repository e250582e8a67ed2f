/* Search, sort and noise as far as the records' geometry needs them. */
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

#include "clutterclassifier/CDSP.h"

void CDSP::GetNearest(double* x, int n, double target, double& value, int& index) {
    if (x == nullptr || n < 1) return;
    int best = 0;
    for (int i = 1; i < n; ++i) {
        if (std::abs(x[i] - target) < std::abs(x[best] - target)) best = i;
    }
    value = x[best];
    index = best;
}

void CDSP::GetNearest(float* x, int n, float target, float& value, int& index) {
    if (x == nullptr || n < 1) return;
    std::vector<double> wide(x, x + n);
    double found = 0.0;
    GetNearest(wide.data(), n, static_cast<double>(target), found, index);
    value = static_cast<float>(found);
}

void CDSP::Sort(float* in, float* out, int* index, int n) {
    for (int i = 0; i < n; ++i) {
        out[i] = in[i];
        index[i] = i;
    }
    for (int i = 0; i < n; ++i) {
        for (int k = i + 1; k < n; ++k) {
            if (!(out[k] < out[i])) continue;
            std::swap(out[i], out[k]);
            std::swap(index[i], index[k]);
        }
    }
}

void CDSP::GenerateRandomNoise(float* out, int n, float min, float max) {
    srand(static_cast<unsigned>(rand()) + static_cast<unsigned>(time(nullptr)));
    for (int i = 0; i < n; ++i) {
        out[i] = static_cast<float>(rand() * static_cast<double>(max - min) / 2147483647.0 + min);
    }
}
