/* Conversions of numbers that have no room in the narrower type. */
#include "base/number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "support/bits.h"

namespace {

using clutter::base::roundToFloat;

/* The C library converts a text without a double in between; of these both are the same number. */
TEST(RoundToFloat, AgreesWithTheCLibraryAtTheEdges) {
    for (const std::string size : {"0x0p0", "0x1.8p-150", "0x1.fffffep-127", "0x1.000001p0",
                                   "0x1.fffffep127", "0x1.fffffefffffffp127", "0x1.ffffffp127",
                                   "0x1.ffffff0000001p127", "0x1p128", "0x1p1000", "inf"}) {
        for (const std::string& text : {size, "-" + size}) {
            const float rounded = roundToFloat(std::strtod(text.c_str(), nullptr));
            EXPECT_TRUE(clutter::test::sameBits(rounded, std::strtof(text.c_str(), nullptr)))
                << text << " gives " << rounded;
        }
    }
    EXPECT_TRUE(std::isnan(roundToFloat(std::numeric_limits<double>::quiet_NaN())));
}

}  // namespace
