#include "dsp/search/interpolation.h"

#include <algorithm>
#include <functional>

namespace clutter::dsp {
namespace {

/* The first knot beyond a place; n when there is none. */
int findKnotBeyond(const double* x, int n, double place, bool ascending) {
    const auto beyond = [place](double knot) { return knot > place; };
    const double* knot = ascending ? std::partition_point(x, x + n, std::not_fn(beyond))
                                   : std::find_if(x, x + n, beyond);
    return static_cast<int>(knot - x);
}

}  // namespace

void interpolateLinear(const double* x, const double* y, int n, const double* xi, double* yi,
                       int ni) {
    const bool ascending = std::adjacent_find(x, x + n, std::not_fn(std::less_equal<>())) == x + n;
    for (int i = 0; i < ni; ++i) {
        const double place = xi[i];
        const int k = findKnotBeyond(x, n, place, ascending);
        if (k == 0) {
            yi[i] = y[0];
        } else if (k < n - 1) {
            yi[i] = y[k] + (place - x[k]) * (y[k] - y[k - 1]) / (x[k] - x[k - 1]);
        } else {
            yi[i] = y[n - 1];
        }
    }
}

}  // namespace clutter::dsp
