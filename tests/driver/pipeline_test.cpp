/* The pipeline: which stages run, in which order, and the whole chain against its definition. */
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/bits.h"
#include "support/directories.h"
#include "support/literal/pipeline.h"
#include "support/scan_context.h"

namespace {

using clutter::test::fieldOf;
using clutter::test::fillContext;
using clutter::test::fillField;
using clutter::test::makeRainScan;
using clutter::test::sameBits;
using literal::PolarScan;

constexpr int kWithoutConversions = 255 & ~(32 | 64);

std::string run(Crres& c, int what, int expected = 1) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(c.RadarDataProcessing(what), expected);
    return testing::internal::GetCapturedStdout();
}

void useShippedMembership(Crres& c) {
    std::snprintf(c.mfdir, sizeof c.mfdir, "%s", kMembershipDirectory);
}

TEST(Pipeline, WholeChainHasTheBitsOfThePlainDefinition) {
    PolarScan scan = makeRainScan(24, 300, 21);
    scan.ccl.clear();
    Crres c;
    fillContext(c, scan);
    useShippedMembership(c);
    c.attenuationalg = 4;
    c.minphaserise = 60.0;
    c.rainfallalg = -1;
    c.zdrbias = 0.15f;
    c.gates2ave_rhv = 3;
    c.rays2ave_rhv = 3;
    c.minsnr = 20.0f;
    literal::PipelineSettings settings;
    settings.leastRise = 60.0;
    settings.relation = -1;
    settings.zdrBias = 0.15f;
    settings.windows[3][0] = settings.windows[3][1] = 3;
    settings.minSnr = 20.0f;
    const std::string phases = literal::process(scan, settings, kMembershipDirectory);
    EXPECT_EQ(run(c, kWithoutConversions),
              "Clutter classification: ccl=255, texture=5x3, minsnr=20.0dB\n"
              "Zdr adjustment: zdr offset=0.15\n"
              "Filtering: zhh=7x1 zdr=7x1 pdp=17x1\n"
              "Attenuation Correction: algorithm=4, freezing level=3000.0m\n" +
                  phases + "Rainfall Estimation\n");
    struct Named {
        const char* name;
        const Cpluvek* record;
        const literal::Field* expected;
    };
    const Named fields[] = {
        {"ccl", &c.ccl, &scan.ccl},   {"zhh", &c.zhh, &scan.zhh}, {"zdr", &c.zdr, &scan.zdr},
        {"pdp", &c.pdp, &scan.pdp},   {"rhv", &c.rhv, &scan.rhv}, {"vel", &c.vel, &scan.vel},
        {"wid", &c.wid, &scan.wid},   {"ldr", &c.ldr, &scan.ldr}, {"rain", &c.rain, &scan.rain},
        {"TA", &c.ta, &scan.ta},      {"Ah", &c.ah, &scan.ah},    {"PdpC", &c.pdpc, &scan.pdpc},
        {"Dpdp", &c.dpdp, &scan.dpdp}};
    for (const Named& field : fields) {
        EXPECT_TRUE(sameBits(fieldOf(*field.record), *field.expected)) << field.name;
    }
    // The scan is worth the comparison: rain, clutter and noise; rays corrected and not; rates.
    int classes[6] = {}, corrected = 0, rainy = 0;
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        ++classes[static_cast<int>(scan.ccl[i])];
        corrected += scan.ta[i] > 0.5f ? 1 : 0;
        rainy += scan.rain[i] > 1.0f ? 1 : 0;
    }
    EXPECT_GT(classes[0], 2000);
    EXPECT_GT(classes[3], 200);
    EXPECT_GT(classes[5], 200);
    EXPECT_GT(corrected, 500);
    EXPECT_LT(corrected, 6000);
    EXPECT_GT(rainy, 500);
}

TEST(Pipeline, EachBitRunsItsStageOnly) {
    struct Case {
        int what;
        const char* printed;
    };
    const Case cases[] = {{0, ""},
                          {1, "Clutter classification: ccl=0, texture=5x3, minsnr=26.0dB\n"},
                          {2, "Zdr adjustment: zdr offset=0.50\n"},
                          {4, "Filtering: zhh=7x1 zdr=7x1 pdp=17x1\n"},
                          {8,
                           "Attenuation Correction: algorithm=-1, freezing level=2750.5m\n"
                           "Some input variables are missing!\n"},
                          {16, "Rainfall Estimation\n"},
                          {32, ""},
                          {64, ""},
                          {128, ""},
                          {256, ""}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        Crres c;
        // One gate, no freezing level: attenuation and rainfall do without their work.
        fillField(c.zhh, 1, 1, {20.0f});
        fillField(c.zdr, 1, 1, {1.0f});
        fillField(c.rain, 1, 1, {5.0f});
        fillField(c.ccl, 1, 1, {5.0f});
        c.clutteralg = 0;
        c.zdrbias = 0.5f;
        c.attenuationalg = -1;
        c.freezinglevel = 2750.5f;
        EXPECT_EQ(run(c, test.what), test.printed);
        const bool blanked = test.what == 128;
        EXPECT_EQ(c.ccl.data[0], test.what == 1 ? 0.0f : 5.0f);
        EXPECT_EQ(c.zdr.data[0], blanked ? -999.0f : test.what == 2 ? 1.5f : 1.0f);
        const float fromRain = 34.1935f, fromReflectivity = 0.6483f;
        EXPECT_NEAR(c.zhh.data[0], blanked ? -999.0f : test.what == 32 ? fromRain : 20.0f, 1e-3f);
        EXPECT_NEAR(c.rain.data[0],
                    blanked           ? -999.0f
                    : test.what == 64 ? fromReflectivity
                                      : 5.0f,
                    1e-3f);
    }
}

TEST(Pipeline, PlainConversionsIgnoreTheConfiguredRelation) {
    Crres c;
    fillField(c.zhh, 2, 2, {10.0f, 20.0f, 30.0f, -32.0f});
    fillField(c.rain, 2, 2, {1.0f, 0.0f, 0.0f, 0.0f});
    c.radarpro.coefficients[0][0] = 300.0;
    run(c, 32 | 64);
    EXPECT_NEAR(c.zhh.data[0], 23.0103f, 1e-4f);
    EXPECT_EQ(c.zhh.data[3], -32.0f);
    EXPECT_NEAR(c.rain.data[0], 1.0f, 1e-5f) << "back from the reflectivity just made";
    EXPECT_EQ(c.rain.data[1], 0.0f);
    c.rain.nrays = 1;
    c.rain.data[0] = 7.0f;
    run(c, 64);
    EXPECT_EQ(c.rain.data[0], 7.0f) << "too small a record is absent";
}

TEST(Pipeline, WithoutReflectivityNothingRuns) {
    Crres c;
    fillField(c.zdr, 2, 2, {1, 2, 3, 4});
    fillField(c.ccl, 2, 2, {3, 3, 3, 3});
    c.zdrbias = 1.0f;
    EXPECT_EQ(run(c, 255, 0), "");
    fillField(c.zhh, 2, 2, {1, 2, 3, 4});
    c.zhh.nrays = 0;
    EXPECT_EQ(run(c, 255, 0), "");
    EXPECT_EQ(fieldOf(c.zdr), (std::vector<float>{1, 2, 3, 4}));
}

TEST(Pipeline, SmoothingTakesEachFieldsOwnSizeAndWindow) {
    Crres c;
    const std::vector<float> steps = {0, 0, 9, 0, 0, 0, 9, 0};
    Cpluvek* const linear[] = {&c.pdp, &c.rhv, &c.vel, &c.wid, &c.ldr};
    for (Cpluvek* record : linear) {
        fillField(*record, 8, 1, steps);
    }
    fillField(c.wid, 4, 2, steps);
    for (Cpluvek* record : {&c.zhh, &c.zdr}) {
        fillField(*record, 8, 1, std::vector<float>(8, 3.0f));
    }
    fillField(c.ccl, 8, 1, {0, 0, 0, 0, 0, 0, 5, 0});
    c.zhh.data[2] = 13.0f;
    c.gates2ave_zhh = 3;
    c.gates2ave_pdp = 3;
    c.gates2ave_vel = 1;
    c.rays2ave_vel = 1;
    c.gates2ave_wid = 3;
    c.rays2ave_wid = 1;
    run(c, 4);
    EXPECT_EQ(fieldOf(c.pdp), (std::vector<float>{0, 3, 3, 3, 0, 0, 0, 0}));
    EXPECT_EQ(fieldOf(c.vel), steps) << "a window of one gate";
    EXPECT_EQ(fieldOf(c.ldr), steps) << "no window";
    EXPECT_EQ(fieldOf(c.wid), (std::vector<float>{0, 3, 3, 3, 0, 0, 0, 0})) << "two rays of four";
    EXPECT_NEAR(c.zhh.data[2], 10.0f * std::log10((2.0f * 1.99526f + 19.9526f) / 3.0f), 1e-4f)
        << "a mean of linear values";
    fillField(c.pdp, 8, 2, std::vector<float>(16, 1.0f));
    c.pdp.data[3] = 7.0f;
    run(c, 4);
    EXPECT_EQ(c.pdp.data[3], 7.0f) << "fewer classes than values";
}

}  // namespace
