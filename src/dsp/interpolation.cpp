#include "dsp/interpolation.h"

#include <algorithm>
#include <cstddef>

namespace clutter::dsp {

void interpolateLinear(const double* x, const double* y, int n, const double* xi, double* yi,
                       int ni) {
    for (int i = 0; i < ni; ++i) {
        const std::ptrdiff_t k = std::upper_bound(x, x + n, xi[i]) - x;
        if (k == 0) {
            yi[i] = y[0];
        } else if (k < n - 1) {
            yi[i] = y[k] + (xi[i] - x[k]) * (y[k] - y[k - 1]) / (x[k] - x[k - 1]);
        } else {
            yi[i] = y[n - 1];
        }
    }
}

}  // namespace clutter::dsp
