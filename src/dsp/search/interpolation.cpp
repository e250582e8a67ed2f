/*
 * Linear interpolation; ascending knots are searched by halving.
 */
#include "dsp/search/interpolation.h"

#include <algorithm>
#include <functional>

namespace clutter::dsp {
namespace {

/* The first knot above a position; n when there is none. */
int findKnotAbove(const double* x, int n, double position, bool ascending) {
    const auto above = [position](double knot) { return knot > position; };
    const double* knot = ascending ? std::partition_point(x, x + n, std::not_fn(above))
                                   : std::find_if(x, x + n, above);
    return static_cast<int>(knot - x);
}

}  // namespace

void interpolateLinear(const double* x, const double* y, int n, const double* xi, double* yi,
                       int ni) {
    const bool ascending = std::adjacent_find(x, x + n, std::not_fn(std::less_equal<>())) == x + n;
    for (int i = 0; i < ni; ++i) {
        const double position = xi[i];
        const int k = findKnotAbove(x, n, position, ascending);
        if (k == 0) {
            yi[i] = y[0];
        } else if (k < n - 1) {
            yi[i] = y[k] + (position - x[k]) * (y[k] - y[k - 1]) / (x[k] - x[k - 1]);
        } else {
            yi[i] = y[n - 1];
        }
    }
}

}  // namespace clutter::dsp
