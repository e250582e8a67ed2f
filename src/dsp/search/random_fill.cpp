/*
 * The generator and its normal distribution.
 */
#include "dsp/search/random_fill.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/constants.h"

namespace clutter::dsp {

void reseed() {
    std::srand(static_cast<unsigned>(std::rand()) + static_cast<unsigned>(std::time(nullptr)));
}

double drawNormal(double mean, double deviation) {
    // The largest random number plus one may exceed the range: its logarithm must not be positive.
    const double share = std::min((std::rand() + 1.0) / kRandomRange, 1.0);
    const double radius = std::sqrt(-2.0 * std::log(share));
    return radius * deviation * std::sin(std::rand() * base::kTwoPi / kRandomRange) + mean;
}

}  // namespace clutter::dsp
