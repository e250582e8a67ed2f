/* Powers and logarithms from short series: as good as their header says, at every scale. */
#include "base/power_series.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(PowerSeries, AgreesWithTheCLibrary) {
    for (double y = -30.0; y <= 30.0; y += 0.00731) {
        const double exact = std::pow(10.0, y);
        EXPECT_NEAR(clutter::base::powerOfTen(y), exact, 4e-14 * exact) << y;
    }
    for (double x = 1e-300; x < 1e300; x *= 1.0731) {
        EXPECT_NEAR(clutter::base::decibels(x), 10.0 * std::log10(x), 1e-12) << x;
    }
    // Where the logarithm is small, so is its error: the series alone is at work.
    for (double x = 0.708; x < 1.414; x += 0.00731) {
        EXPECT_NEAR(clutter::base::decibels(x), 10.0 * std::log10(x), 1e-14) << x;
    }
}

}  // namespace
