/* The rainfall stage. */
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/bits.h"
#include "support/literal/pipeline.h"
#include "support/scan_context.h"

namespace {

using clutter::test::fieldOf;
using clutter::test::fillContext;
using clutter::test::makeRainScan;
using clutter::test::sameBits;
using literal::PolarScan;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(RainfallStage, SameBitsAsThePlainDefinition) {
    PolarScan scan = makeRainScan(13, 211, 6);
    for (std::size_t i = 0; i < scan.cells(); i += 11) {
        scan.zhh[i] = i % 2 == 0 ? kNan : scan.zhh[i];
        scan.zdr[i] = i % 3 == 0 ? kNan : 6.0f;
        scan.fzl[i] = i % 5 == 0 ? kNan : scan.fzl[i];
    }
    for (const int relation : {0, 1, -1}) {
        Crres c;
        fillContext(c, scan);
        c.PrecipitationEstimation(relation);
        PolarScan expected = scan;
        literal::estimateRain(expected, relation);
        EXPECT_TRUE(sameBits(fieldOf(c.rain), expected.rain)) << relation;
    }
}

TEST(RainfallStage, HybridTakesTheSecondRelationOnlyInsideItsBounds) {
    const float below = 3000.0f;
    struct Case {
        float dbz, zdr, freezing;
        bool second;
    };
    // The beam of a vertical scan is as high as its range: gate 4 is at 1,000 m.
    const Case cases[] = {
        {20.0f, 1.0f, below, true},  {20.0f, 0.3f, below, false},  {20.0f, 0.31f, below, true},
        {20.0f, 5.0f, below, false}, {20.0f, 4.99f, below, true},  {15.0f, 1.0f, below, false},
        {15.01f, 1.0f, below, true}, {20.0f, 1.0f, 1500.0f, true}, {20.0f, 1.0f, 1499.9f, false},
        {20.0f, 1.0f, kNan, false},  {20.0f, kNan, below, false}};
    for (const Case& test : cases) {
        Crres c;
        PolarScan scan;
        scan.ngates = 5;
        scan.nrays = 1;
        scan.elevation = 1.5707964f;
        scan.zhh.assign(5, test.dbz);
        scan.zdr.assign(5, test.zdr);
        scan.fzl.assign(5, test.freezing);
        scan.rain.assign(5, -1.0f);
        fillContext(c, scan);
        c.PrecipitationEstimation(-7);
        float rates[2] = {};
        float dbz = test.dbz, zdr = test.zdr;
        for (int relation : {0, 1}) {
            c.radarpro.RainfallEstimation(&dbz, &zdr, nullptr, 1, relation, nullptr, 0,
                                          rates + relation);
        }
        EXPECT_EQ(c.rain.data[4], rates[test.second ? 1 : 0])
            << test.dbz << " dBZ, " << test.zdr << " dB, " << test.freezing << " m";
    }
}

TEST(RainfallStage, WithoutItsInputsRainStaysAsItIs) {
    const PolarScan scan = makeRainScan(3, 20, 7);
    struct Case {
        Cpluvek Crres::*record;
        int relation;
        bool written;
    };
    const Case cases[] = {{&Crres::fzl, 0, false}, {&Crres::zdr, -1, false},
                          {&Crres::zdr, 1, false}, {&Crres::zdr, 0, true},
                          {&Crres::rhv, -1, true}, {&Crres::rhv, 2, false},
                          {&Crres::rhv, 3, false}, {&Crres::rhv, 5, true}};
    for (const Case& test : cases) {
        for (const bool absent : {true, false}) {
            Crres c;
            fillContext(c, scan);
            Cpluvek& record = c.*test.record;
            if (absent) {
                delete[] record.data;
                record.data = nullptr;
            } else {
                record.ngates -= 1;
            }
            c.PrecipitationEstimation(test.relation);
            EXPECT_EQ(!sameBits(fieldOf(c.rain), scan.rain), test.written)
                << "relation " << test.relation << (absent ? ", absent" : ", short");
        }
    }
    Crres c;
    fillContext(c, scan);
    c.rain.nrays = 2;
    c.PrecipitationEstimation(0);
    EXPECT_EQ(c.rain.data[0], -1.0f) << "rain too small";
}

}  // namespace
