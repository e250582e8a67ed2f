/* Values at points: closed forms, and random records against a search through everything. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/Cpluvek.h"
#include "support/bits.h"
#include "support/literal/geometry.h"
#include "support/polar_record.h"

namespace {

using clutter::test::fillPolar;
using clutter::test::onNullRecord;
using clutter::test::sameBits;
using Values = std::vector<float>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/* 3 columns to the east, 2 rows to the north, 10 m, from (1000, 2000). */
void fillCartesian(Cpluvek& record) {
    fillPolar(record, 3, 2, 10.0f);
    record.coordtype = 2;
    record.axislimits0[0] = 1000.0f;
    record.axislimits0[3] = 2000.0f;
}

TEST(ExtractDataXY, TakesTheCellAPointLiesIn) {
    struct Case {
        float x, y, value;
    };
    const Case cases[] = {{1005, 2005, 0},       {1015, 2019, 101},    {1029, 2000, 200},
                          {1030, 2005, -9999},   {1005, 2020, -9999},  {991, 1991, 0},
                          {990, 2005, -9999},    {1005, 1990, -9999},  {1e30f, 2005, -9999},
                          {1005, -1e30f, -9999}, {kNan, 2005, -9999},  {1005, kInfinity, -9999},
                          {1029, 1990.5f, 200},  {-3e10f, 2005, -9999}};
    Values xy, expected;
    for (const Case& c : cases) {
        xy.push_back(c.x);
    }
    for (const Case& c : cases) {
        xy.push_back(c.y);
    }
    for (const Case& c : cases) {
        expected.push_back(c.value);
    }
    Values out(expected.size());
    Cpluvek record;
    fillCartesian(record);
    EXPECT_EQ(record.ExtractDataXY(xy.data(), out.data(), static_cast<int>(out.size())), 1);
    EXPECT_EQ(out, expected);
}

TEST(ExtractDataXY, RefusesWithTheGivenMessages) {
    float xy[2] = {0, 0}, out = 7.0f;
    const auto printed = [&](Cpluvek * record) __attribute__((no_sanitize("undefined"))) {
        testing::internal::CaptureStdout();
        EXPECT_EQ(record->ExtractDataXY(xy, &out, 1), 0);
        return testing::internal::GetCapturedStdout();
    };
    Cpluvek polar, empty, grid;
    fillPolar(polar, 1, 1);
    empty.coordtype = 2;
    fillCartesian(grid);
    EXPECT_EQ(onNullRecord(printed), "No data to extract (pointer is NULL)\n");
    EXPECT_EQ(printed(&polar), "This radar data file is not in cartesian coordinates ...\n");
    EXPECT_EQ(printed(&empty), "No data to extract (pointer is NULL)\n");
    EXPECT_EQ(grid.ExtractDataXY(nullptr, &out, 1), 0);
    EXPECT_EQ(grid.ExtractDataXY(xy, nullptr, 1), 0);
    EXPECT_EQ(out, 7.0f);
    EXPECT_EQ(grid.ExtractDataXY(xy, &out, 0), 1);
    EXPECT_EQ(grid.ExtractDataXY(xy, &out, -5), 1);
}

TEST(ExtractDataRA, TakesTheNearestRayAndTheGateOfTheRange) {
    struct Case {
        float range, azimuth, value;
    };
    // Rays at 0, 5.73, 11.46, 17.19 degrees; gates of 100 m.
    const Case cases[] = {{0, 0, 0},        {99.9f, 3, 100},      {250, 11, 202},  {1e9f, 17, 304},
                          {1e30f, 17, 304}, {kInfinity, 17, 304}, {500, 359, 304}, {-50, 6, 100},
                          {-150, 6, 4},     {-100, 0, 0},         {-1e30f, 17, 0}, {kNan, 17, 0},
                          {200, kNan, 2},   {200, kInfinity, 2}};
    for (const std::size_t copies : {1u, 5u}) {  // few points and many are found in two ways
        Values ranges, azimuths, expected;
        for (std::size_t k = 0; k < copies; ++k) {
            for (const Case& c : cases) {
                ranges.push_back(c.range);
                azimuths.push_back(c.azimuth);
                expected.push_back(c.value);
            }
        }
        Values out(expected.size());
        Cpluvek record;
        fillPolar(record, 4, 5);
        record.coordtype = copies > 1 ? 1 : 0;
        EXPECT_EQ(record.ExtractDataRA(ranges.data(), azimuths.data(), out.data(),
                                       static_cast<int>(out.size())),
                  1);
        EXPECT_EQ(out, expected);
    }
}

TEST(ExtractDataRA, RefusesWhatCannotBeSampled) {
    float one = 1.0f, out = 7.0f, other = 7.0f;
    const auto refused = [&](Cpluvek& record) {
        return record.ExtractDataRA(&one, &one, &out, 1) == 0 &&
               record.FindValidDataRA(&one, &one, 0, 1, &out, &other, 3, 3) == 0;
    };
    Cpluvek record, empty;
    empty.coordtype = 0;
    EXPECT_TRUE(refused(empty));
    fillPolar(record, 2, 2);
    EXPECT_FALSE(refused(record));
    out = 7.0f;
    EXPECT_EQ(record.ExtractDataRA(nullptr, &one, &out, 1), 0);
    EXPECT_EQ(record.ExtractDataRA(&one, nullptr, &out, 1), 0);
    EXPECT_EQ(record.ExtractDataRA(&one, &one, nullptr, 1), 0);
    EXPECT_EQ(record.FindValidDataRA(&one, &one, 0, 1, nullptr, &out, 3, 3), 0);
    EXPECT_EQ(record.FindValidDataRA(&one, &one, 0, 1, &out, nullptr, 3, 3), 0);
    record.coordtype = 2;
    EXPECT_TRUE(refused(record));
    record.coordtype = 0;
    record.nrays = 0;
    EXPECT_TRUE(refused(record));
    record.nrays = 2;
    delete[] record.angles;
    record.angles = nullptr;
    EXPECT_TRUE(refused(record));
    EXPECT_EQ(out, 7.0f);
}

TEST(FindValidDataRA, MovesToTheFirstValidGateOfTheWindow) {
    Cpluvek record;
    fillPolar(record, 4, 5);
    const float bad = -32.0f;
    std::fill_n(record.data, 20, bad);
    record.data[3 * 5 + 2] = 1.0f;  // ray 3, which is beside ray 0
    record.data[1 * 5 + 0] = 2.0f;
    const auto moved = [&](float range, float azimuth, int wgates, int wrays) {
        float newRange = range, newAzimuth = azimuth;
        EXPECT_EQ(record.FindValidDataRA(&newRange, &newAzimuth, bad, 1, &newRange, &newAzimuth,
                                         wgates, wrays),
                  1);
        return std::pair{newRange, std::round(newAzimuth * 10) / 10};
    };
    using Point = std::pair<float, float>;
    EXPECT_EQ(moved(170, 1, 3, 3), (Point{200, 17.2f}));      // ray 3 precedes ray 0
    EXPECT_EQ(moved(170, 6, 3, 3), (Point{0, 5.7f}));         // in its own ray
    EXPECT_EQ(moved(170, 1, 1, 1), (Point{170, 1}));          // 1 x 1 never moves
    EXPECT_EQ(moved(170, 11.5f, 1, 1), (Point{170, 11.5f}));  // nothing there
    EXPECT_EQ(moved(30, 6, 3, 3), (Point{30, 6}));            // valid already
    EXPECT_EQ(moved(170, 11.5f, -3, 3), (Point{170, 11.5f}));
    EXPECT_EQ(moved(1e9f, 11.5f, 3, 3), (Point{1e9f, 11.5f}));  // outside the block
    EXPECT_EQ(moved(-1e30f, 11.5f, 3, 3), (Point{-1e30f, 11.5f}));
    // Half a window of 10^9 rays is a whole number of circles: the search begins in ray 2.
    EXPECT_EQ(moved(450, 11.5f, 2000000001, 2000000001), (Point{200, 17.2f}));
    record.data[1 * 5 + 0] = kNan;  // differs from invalid
    EXPECT_EQ(moved(170, 6, 3, 1), (Point{0, 5.7f}));
}

/* A record with the azimuths of a table of oddities, and points of every kind. */
struct Trial {
    Cpluvek record;
    Values ranges, azimuths;

    Trial(std::mt19937& random, int points) {
        const auto below = [&](int n) {
            return static_cast<int>(random() % static_cast<unsigned>(n));
        };
        fillPolar(record, 1 + below(40), 1 + below(12));
        const int kind = below(6);
        for (int r = 0; r < record.nrays; ++r) {
            float& azimuth = record.angles[1 + r];
            azimuth = static_cast<float>(below(63)) * 0.1f;
            if (kind == 1) {
                azimuth = 1e-30f * static_cast<float>(below(9));  // all equally far
            }
            if (kind == 2 && below(3) == 0) {
                azimuth = kNan;
            }
            if (kind == 3 && below(3) == 0) {
                azimuth = below(2) ? kInfinity : -kInfinity;
            }
            if (kind == 4) {
                azimuth = 1e20f * static_cast<float>(below(5) - 2);
            }
            if (kind == 5) {
                azimuth = 1.0f;
            }
        }
        for (int i = 0; i < record.nrays * record.ngates; ++i) {
            if (below(3)) {
                record.data[i] = -32.0f;
            }
        }
        for (int i = 0; i < points; ++i) {
            ranges.push_back(static_cast<float>(below(2000) - 400));
            azimuths.push_back(static_cast<float>(below(720) - 180) * 0.5f);
            if (below(20) == 0) {
                ranges.back() = below(2) ? kNan : 1e12f;
            }
            if (below(20) == 0) {
                azimuths.back() = below(2) ? kNan : -kInfinity;
            }
        }
    }
};

TEST(ExtractionAgainstASearchThroughEverything, SameBits) {
    std::mt19937 random(7);
    for (int trial = 0; trial < 400; ++trial) {
        const int n = trial % 2 ? 60 : 5;
        Trial t(random, n);
        const auto size = static_cast<std::size_t>(n);
        Values out(size), expected(size);
        ASSERT_EQ(t.record.ExtractDataRA(t.ranges.data(), t.azimuths.data(), out.data(), n), 1);
        literal::extractRangeAzimuth(t.record, t.ranges.data(), t.azimuths.data(), expected.data(),
                                     n);
        ASSERT_TRUE(sameBits(out, expected)) << "trial " << trial;
        const int wgates = static_cast<int>(random() % 9), wrays = static_cast<int>(random() % 99);
        Values r(size), a(size), er(size), ea(size);
        ASSERT_EQ(t.record.FindValidDataRA(t.ranges.data(), t.azimuths.data(), -32.0f, n, r.data(),
                                           a.data(), wgates, wrays),
                  1);
        literal::findValid(t.record, t.ranges.data(), t.azimuths.data(), -32.0f, n, er.data(),
                           ea.data(), wgates, wrays);
        ASSERT_TRUE(sameBits(r, er) && sameBits(a, ea)) << "trial " << trial;
    }
}

}  // namespace
