/* Calibration of differential reflectivity in the context. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/bits.h"
#include "support/literal/pipeline.h"
#include "support/scan_context.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::fieldOf;
using clutter::test::fillContext;
using clutter::test::makeRainScan;
using clutter::test::sameBits;
using literal::Field;
using literal::PolarScan;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kVertical = 1.5707964f;

struct Request {
    float r0, r1, rhoMin, zMin, zMax;
};

std::vector<float> statistics(Crres& c, const Request& q, bool low) {
    std::vector<float> stats(7, 1.0f);
    if (low) {
        c.CalculateOffsetsAtLowElevations(stats.data(), q.r0, q.r1, q.rhoMin, q.zMin, q.zMax);
    } else {
        c.CalculateOffsetsAt90Deg(stats.data(), q.r0, q.r1, q.rhoMin, q.zMin);
    }
    return stats;
}

/* A vertical scan of one value in all gates. */
PolarScan uniformScan(int nrays, int ngates) {
    PolarScan scan;
    scan.ngates = ngates;
    scan.nrays = nrays;
    scan.elevation = kVertical;
    const std::size_t n = static_cast<std::size_t>(nrays * ngates);
    for (Field* field : {&scan.zhh, &scan.zdr, &scan.ccl}) {
        field->assign(n, 0.0f);
    }
    scan.pdp.assign(n, 3.0f);
    scan.rhv.assign(n, 1.0f);
    scan.vel.assign(n, -2.0f);
    scan.wid.assign(n, 0.5f);
    return scan;
}

TEST(ZdrStatistics, MoreThanAHundredGatesAreNeededAndTheSumsStartAtOne) {
    struct Case {
        int nrays, gates;
        bool known;
    };
    for (const Case& test : {Case{10, 10, false}, Case{101, 1, true}, Case{100, 2, true}}) {
        Crres c;
        fillContext(c, uniformScan(test.nrays, 20));
        const int n = test.nrays * test.gates;
        const std::vector<float> stats = statistics(
            c, {500.0f, 500.0f + 250.0f * static_cast<float>(test.gates), 1.0f, 0.0f, 0.0f}, false);
        EXPECT_NEAR(stats[0], 90.0f, 1e-4f);
        const float mean = static_cast<float>(10.0 * std::log10((n + 1.0) / n));
        const std::vector<float> expected =
            test.known ? std::vector<float>{stats[0], mean, mean, 3.0f, 1.0f, -2.0f, 0.5f}
                       : std::vector<float>{stats[0], -99, -99, -99, -99, -99, -99};
        EXPECT_EQ(stats, expected) << n;
    }
}

TEST(ZdrStatistics, ElevationIsStoredEvenWhenItIsRefused) {
    struct Case {
        float degrees;
        const char* message;
    };
    const Case cases[] = {{87.9f, "Please select a 90-degree scan (87.90)!\n"},
                          {92.1f, "Please select a 90-degree scan (92.10)!\n"},
                          {88.1f, ""},
                          {91.9f, ""}};
    for (const Case& test : cases) {
        Crres c;
        PolarScan scan = uniformScan(50, 20);
        scan.elevation = test.degrees * 3.1415927f / 180.0f;
        fillContext(c, scan);
        testing::internal::CaptureStdout();
        const std::vector<float> stats = statistics(c, {0.0f, 1000.0f, 0.0f, -9.0f, 9.0f}, false);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), test.message);
        EXPECT_NEAR(stats[0], test.degrees, 1e-4f);
        EXPECT_EQ(stats[1] == -99.0f, test.message[0] != '\0');
    }
}

TEST(ZdrStatistics, EveryFieldIsNeeded) {
    Cpluvek Crres::*const fields[] = {&Crres::zhh, &Crres::zdr, &Crres::rhv, &Crres::pdp,
                                      &Crres::vel, &Crres::wid, &Crres::ccl};
    for (const bool low : {true, false}) {
        for (std::size_t i = 0; i < std::size(fields); ++i) {
            Crres c;
            fillContext(c, uniformScan(50, 20));
            Cpluvek& record = c.*fields[i];
            if (i == 0) {
                delete[] record.data;
                record.data = nullptr;
            } else {
                record.nrays = 49;
            }
            const std::vector<float> stats = statistics(c, {0.0f, 2000.0f, 0.0f, -9.0f, 9.0f}, low);
            const bool needed = low || i != 6;
            EXPECT_EQ(stats[0] == -99.0f, needed) << i << ", " << low;
            EXPECT_EQ(stats[6] == -99.0f, needed) << i << ", " << low;
        }
    }
    Crres().CalculateOffsetsAt90Deg(nullptr, 0.0f, 1.0f, 0.0f, 0.0f);
}

TEST(ZdrStatistics, OnlyChosenGatesAreAveraged) {
    PolarScan scan = uniformScan(100, 20);
    // The 100 gates 3 alone are too few.
    struct Case {
        float zhh, rhv, ccl;
        bool atVertical, low;
    };
    const Case cases[] = {{10.0f, 0.95f, 0.0f, true, true},  {9.99f, 0.95f, 0.0f, false, false},
                          {30.0f, 0.95f, 0.0f, true, true},  {30.1f, 0.95f, 0.0f, true, false},
                          {kNan, 0.95f, 0.0f, false, false}, {20.0f, 0.949f, 0.0f, false, false},
                          {20.0f, kNan, 0.0f, false, false}, {20.0f, 1.0f, 5.0f, true, false},
                          {20.0f, 1.0f, kNan, true, false}};
    for (const Case& test : cases) {
        for (std::size_t i = 0; i < scan.cells(); ++i) {
            const bool chosen = i % 20 == 4;
            scan.zhh[i] = chosen ? test.zhh : 20.0f;
            scan.rhv[i] = chosen ? test.rhv : 1.0f;
            scan.ccl[i] = chosen ? test.ccl : 0.0f;
            scan.vel[i] = i % 20 == 3 || chosen ? 2.0f : 9.0f;
            scan.vel[i] += chosen ? 2.0f : 0.0f;
        }
        for (const bool low : {true, false}) {
            Crres c;
            fillContext(c, scan);
            const bool counts = low ? test.low : test.atVertical;
            const float mean = statistics(c, {750.0f, 1250.0f, 0.95f, 10.0f, 30.0f}, low)[5];
            EXPECT_EQ(mean, counts ? 3.0f : -99.0f)
                << test.zhh << ' ' << test.rhv << ' ' << test.ccl << ' ' << low;
        }
    }
}

TEST(ZdrStatistics, RangesAreWholeGatesInsideTheRay) {
    struct Case {
        float r0, r1;
        bool known;
    };
    const Case cases[] = {{0.0f, 4750.0f, true},     {0.0f, 5000.0f, false},
                          {-200.0f, 1000.0f, true},  {-600.0f, 1000.0f, false},
                          {2000.0f, 1000.0f, false}, {1000.0f, 1249.0f, false}};
    for (const Case& test : cases) {
        Crres c;
        fillContext(c, uniformScan(101, 20));
        const Request request{test.r0, test.r1, 0.0f, -9.0f, 9.0f};
        for (const bool low : {true, false}) {
            EXPECT_EQ(statistics(c, request, low)[3], test.known ? 3.0f : -99.0f)
                << test.r0 << " .. " << test.r1;
        }
    }
}

/* A vertical scan whose differential reflectivities count the gates: a height is a range. */
TEST(ZdrSamples, OneFileForEachRayThatHasSome) {
    PolarScan scan = uniformScan(3, 4);
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        scan.zdr[i] = 0.5f * static_cast<float>(i);
    }
    scan.zhh = {20.0f, 14.9f, 15.0f, 38.0f, 38.1f, kNan, 0.0f, 0.0f, 20.0f, 20.0f, 20.0f, 20.0f};
    scan.rhv[8] = 0.9499f;
    scan.rhv[9] = kNan;
    scan.rhv[10] = 0.95f;
    scan.ccl[11] = 5.0f;
    struct Case {
        float height;
        const char* files[3];
    };
    // The second height is past the end of the ray: samples run on into the next rays.
    const Case cases[] = {{1000.0f, {"0.0000\n1.0000\n1.5000\n", "", "5.0000\n"}},
                          {2750.0f, {"0.0000\n1.0000\n1.5000\n5.0000\n", "5.0000\n", "5.0000\n"}},
                          {-100.0f, {"", "", ""}}};
    for (const Case& test : cases) {
        clutter::test::TempDir directory;
        Crres c;
        fillContext(c, scan);
        c.zhh.year = 2009;
        c.zhh.month = 7;
        std::string prefix = directory.file("zdr");
        c.ExtractZdrDataToCalculateAzimuthVariation(prefix.data(), test.height, 15.0f, 38.0f);
        for (std::size_t r = 0; r < 3; ++r) {
            const std::string path =
                directory.file("zdr_200907_AZ_00" + std::to_string(r) + ".dat");
            const auto bytes = clutter::test::readFile(path);
            EXPECT_EQ(std::string(bytes.begin(), bytes.end()), test.files[r]) << test.height;
            EXPECT_EQ(std::filesystem::exists(path), test.files[r][0] != '\0') << test.height;
        }
    }
}

TEST(ZdrSamples, WithoutInputsNoFile) {
    clutter::test::TempDir directory;
    std::string prefix = directory.file("zdr");
    for (Cpluvek Crres::*field : {&Crres::zdr, &Crres::ccl, &Crres::rhv}) {
        Crres c;
        fillContext(c, makeRainScan(3, 40, 10));
        (c.*field).ngates = 39;
        c.ExtractZdrDataToCalculateAzimuthVariation(prefix.data(), 500.0f, -99.0f, 99.0f);
    }
    Crres c;
    fillContext(c, makeRainScan(3, 40, 10));
    c.ExtractZdrDataToCalculateAzimuthVariation(nullptr, 500.0f, -99.0f, 99.0f);
    c.zhh.gatesize = 0.0f;
    c.ExtractZdrDataToCalculateAzimuthVariation(prefix.data(), 500.0f, -99.0f, 99.0f);
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

TEST(ZdrOffset, IsAddedToEveryValueOfItsOwnRecord) {
    Crres c;
    c.CalibrateZdrOffsetandAzimuthVariation();
    PolarScan scan = makeRainScan(2, 30, 11);
    scan.zdr[3] = kNan;
    fillContext(c, scan);
    c.zhh.ngates = 1;
    c.zdrbias = -0.2f;
    c.CalibrateZdrOffsetandAzimuthVariation();
    for (float& value : scan.zdr) {
        value += -0.2f;
    }
    EXPECT_TRUE(sameBits(fieldOf(c.zdr), scan.zdr));
}

}  // namespace
