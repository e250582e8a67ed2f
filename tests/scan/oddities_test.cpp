/* What is odd in a sweep, sentence by sentence, and where a gap in a circle begins. */
#include "scan/fields/oddities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace scan {
namespace {

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

/* Rays of two gates in the given directions. */
Sweep sweepAt(std::vector<double> azimuthDeg) {
    Sweep sweep;
    sweep.number = 1;
    sweep.nrays = static_cast<int>(azimuthDeg.size());
    sweep.ngates = 2;
    sweep.azimuthDeg = std::move(azimuthDeg);
    return sweep;
}

std::vector<double> circle(int rays, double stepDeg, int missing = 0) {
    std::vector<double> azimuthDeg;
    for (int r = 0; r < rays - missing; ++r) {
        azimuthDeg.push_back(r * stepDeg);
    }
    return azimuthDeg;
}

std::vector<std::string> odditiesOf(std::vector<Sweep> sweeps) {
    Scan scan;
    scan.sweeps = std::move(sweeps);
    addOddities(scan);
    return scan.oddities;
}

TEST(Oddities, AreSaidOfDirections) {
    const struct {
        std::vector<double> azimuthDeg;
        std::vector<std::string> expected;
    } cases[] = {
        {circle(36, 10), {}},
        {circle(30, 1), {"The rays do not close a circle (largest gap 331.0 degrees)."}},
        {circle(37, 10), {"1 rays share their azimuth with another."}},
        {{359.1, 119, 240}, {}},
        {{358.9, 119, 240}, {"The first ray looks at 358.9 degrees, not north."}},
        {{0, 120, 119, 240}, {"The azimuths are not in order (1 steps back)."}},
        {{240, 120, 0.5}, {"The first ray looks at 240.0 degrees, not north."}},
        {{10}, {}},
        {{0, 180}, {"The rays do not close a circle (largest gap 180.0 degrees)."}},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(odditiesOf({sweepAt(row.azimuthDeg)}), row.expected) << row.azimuthDeg[0];
        Sweep rhi = sweepAt(row.azimuthDeg);
        rhi.rhi = true;
        EXPECT_EQ(odditiesOf({rhi}), std::vector<std::string>{});
    }
}

TEST(Oddities, AreSaidOfValues) {
    Sweep sweep = sweepAt({0, 120, 240});
    sweep.rayGates = {2, 1, 2};
    std::vector<float> velocities(1000, 5.0f);
    velocities[0] = -4.0f;
    std::fill_n(velocities.begin() + 1, 11, 1000.0f);
    std::vector<float> sound = velocities;
    sound[1] = 5.0f;  // 10 in 1000 may be wrong
    sweep.fields = {{"DZ", "", {kMissing, kMissing}},
                    {"ZQ", "", {7, kMissing, 7}},
                    {"QX", "", {7, kMissing}},
                    {"VR", "", velocities},
                    {"V", "", sound}};
    const std::string lengths =
        "The number of gates differs from ray to ray (1 to 2); shorter rays are padded with "
        "missing gates.";
    Sweep other = sweepAt({0, 120, 240});
    other.number = 2;
    other.rayGates = sweep.rayGates;
    Sweep even = other;
    even.rayGates = {2, 2, 2};
    const std::vector<std::string> found = odditiesOf({sweep, other, even});
    ASSERT_EQ(found.size(), 5u);
    EXPECT_EQ(found[0], "Sweeps 1, 2: " + lengths);
    EXPECT_EQ(found[1], "Sweep 1: DZ holds no value.");
    EXPECT_EQ(found[2], "Sweep 1: ZQ is 7 wherever it has a value.");
    EXPECT_EQ(found[3].substr(0, 30), "Sweep 1: 1 % of VR lie outside");
    EXPECT_NE(found[4].find(": ZQ, QX."), std::string::npos) << found[4];
    EXPECT_EQ(odditiesOf({other}), std::vector<std::string>{lengths});
}

TEST(Oddities, ASiteHasALatitudeAndALongitude) {
    const struct {
        double latitudeDeg, longitudeDeg;
        bool odd;
    } cases[] = {{-90, -180, false}, {90, 360, false},  {90.1, 0, true},        {-90.1, 0, true},
                 {0, 360.1, true},   {0, -180.1, true}, {std::nan(""), 0, true}};
    for (const auto& row : cases) {
        Scan scan;
        scan.latitudeDeg = row.latitudeDeg;
        scan.longitudeDeg = row.longitudeDeg;
        addOddities(scan);
        EXPECT_EQ(scan.oddities.size(), row.odd ? 1u : 0u) << row.latitudeDeg;
    }
}

/* A gap is wider than two and a half of the usual steps, and than three degrees. */
TEST(Oddities, ACircleMayLackARayOrTwo) {
    const struct {
        std::vector<double> azimuthDeg;
        bool closed;
    } cases[] = {
        {circle(36, 10, 1), true},  {circle(36, 10, 2), false},  {circle(360, 1, 2), true},
        {circle(360, 1, 3), false}, {circle(720, 0.5, 5), true}, {circle(720, 0.5, 6), false},
        {{0, 120, 240}, true},      {{0, 180}, false},           {{}, false},
        {{0, 10, 20, 30}, false},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(closesCircle(sweepAt(row.azimuthDeg)), row.closed) << row.azimuthDeg.size();
    }
    EXPECT_DOUBLE_EQ(largestAzimuthGapDeg(sweepAt({350, 0, 30})), 320);
    EXPECT_DOUBLE_EQ(largestAzimuthGapDeg(sweepAt({})), 360);
}

}  // namespace
}  // namespace scan
