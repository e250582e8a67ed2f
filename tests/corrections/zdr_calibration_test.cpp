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
#include "support/literal_pipeline.h"
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

TEST(ZdrStatistics, SameBitsAsThePlainDefinition) {
    PolarScan scan = makeRainScan(30, 200, 8);
    for (std::size_t i = 0; i < scan.cells(); i += 13) scan.zhh[i] = kNan;
    for (std::size_t i = 0; i < scan.cells(); i += 17) scan.rhv[i] = kNan;
    const Request requests[] = {
        {1000.0f, 20000.0f, 0.95f, 10.0f, 30.0f}, {-200.0f, 49750.0f, 0.0f, -99.0f, 35.0f},
        {3000.0f, 3260.0f, 0.95f, 10.0f, 30.0f},  {0.0f, 50000.0f, 0.0f, 0.0f, 50.0f},
        {5000.0f, 5100.0f, 0.0f, 0.0f, 50.0f},    {6000.0f, 5000.0f, 0.0f, 0.0f, 50.0f},
        {-600.0f, 5000.0f, 0.0f, 0.0f, 50.0f}};
    int known = 0;
    for (const float elevation : {kVertical, 0.02f}) {
        scan.elevation = elevation;
        for (const Request& q : requests) {
            for (const bool low : {true, false}) {
                Crres c;
                fillContext(c, scan);
                testing::internal::CaptureStdout();
                const std::vector<float> stats = statistics(c, q, low);
                const bool refused = !low && elevation != kVertical;
                EXPECT_EQ(testing::internal::GetCapturedStdout(),
                          refused ? "Please select a 90-degree scan (1.15)!\n" : "");
                const std::vector<float> expected =
                    literal::zdrStatistics(scan, q.r0, q.r1, q.rhoMin, q.zMin, q.zMax, low);
                EXPECT_TRUE(sameBits(stats, expected)) << q.r0 << " .. " << q.r1 << ", " << low;
                known += stats[1] != -99.0f ? 1 : 0;
            }
        }
    }
    EXPECT_EQ(known, 6) << "two requests, three ways each";
}

/* A vertical scan of one value in all gates. */
PolarScan uniformScan(int nrays, int ngates) {
    PolarScan scan;
    scan.ngates = ngates;
    scan.nrays = nrays;
    scan.elevation = kVertical;
    const std::size_t n = static_cast<std::size_t>(nrays * ngates);
    for (Field* field : {&scan.zhh, &scan.zdr, &scan.ccl}) field->assign(n, 0.0f);
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

std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string linesOf(const Field& samples) {
    std::string text;
    for (const float value : samples) {
        char line[64];
        std::snprintf(line, sizeof line, "%2.4f\n", static_cast<double>(value));
        text += line;
    }
    return text;
}

TEST(ZdrSamples, OneFileARayAndOnlyForRaysThatHaveSome) {
    PolarScan scan = makeRainScan(12, 60, 9);
    for (std::size_t g = 0; g < 60; ++g) scan.rhv[4 * 60 + g] = g % 2 == 0 ? 0.9499f : kNan;
    for (std::size_t g = 0; g < 60; ++g) scan.rhv[5 * 60 + g] = 0.95f;
    // The last height is reached beyond the ray: samples run on into the rays behind it.
    for (const float height : {200.0f, 1500.0f, -100.0f}) {
        clutter::test::TempDir directory;
        Crres c;
        fillContext(c, scan);
        c.zhh.year = 2009;
        c.zhh.month = 7;
        std::string prefix = directory.file("zdr");
        c.ExtractZdrDataToCalculateAzimuthVariation(prefix.data(), height, 15.0f, 38.0f);
        const std::vector<Field> samples = literal::zdrSamples(scan, height, 15.0f, 38.0f);
        int files = 0;
        for (int r = 0; r < scan.nrays; ++r) {
            char name[64];
            std::snprintf(name, sizeof name, "zdr_200907_AZ_%.3d.dat", r);
            const std::string path = directory.file(name);
            const Field& expected = samples[static_cast<std::size_t>(r)];
            EXPECT_EQ(std::filesystem::exists(path), !expected.empty()) << name;
            EXPECT_EQ(textOf(path), linesOf(expected)) << name;
            files += expected.empty() ? 0 : 1;
        }
        EXPECT_EQ(files > 5, height > 0.0f);
        EXPECT_EQ(samples[3].size() > 60, height > 500.0f);
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
    for (float& value : scan.zdr) value += -0.2f;
    EXPECT_TRUE(sameBits(fieldOf(c.zdr), scan.zdr));
}

}  // namespace
