/* The attenuation stage against its plain definition, and on rays whose answer is known. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/bits.h"
#include "support/literal/pipeline.h"
#include "support/scan_context.h"

namespace {

using clutter::test::fieldOf;
using clutter::test::fillContext;
using clutter::test::fillField;
using clutter::test::makeRainScan;
using clutter::test::sameBits;
using literal::PolarScan;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

std::string run(Crres& c) {
    testing::internal::CaptureStdout();
    c.AttenuationCorrection();
    return testing::internal::GetCapturedStdout();
}

struct Named {
    const char* name;
    Cpluvek* record;
    const literal::Field* expected;
};

void expectSame(Crres& c, const PolarScan& scan) {
    const Named fields[] = {{"zhh", &c.zhh, &scan.zhh},    {"pdp", &c.pdp, &scan.pdp},
                            {"Dpdp", &c.dpdp, &scan.dpdp}, {"a", &c.acoef, &scan.acoef},
                            {"b", &c.bcoef, &scan.bcoef},  {"alpha", &c.alpha, &scan.alpha},
                            {"TA", &c.ta, &scan.ta},       {"PdpC", &c.pdpc, &scan.pdpc},
                            {"Ah", &c.ah, &scan.ah},       {"KDP", &c.kdp, &scan.kdp}};
    for (const Named& field : fields) {
        EXPECT_TRUE(sameBits(fieldOf(*field.record), *field.expected)) << field.name;
    }
}

/* Odd values in single gates, rays of every kind of freezing level. */
PolarScan oddScan(int nrays, int ngates, float gateSize) {
    PolarScan scan = makeRainScan(nrays, ngates, 31);
    scan.gateSize = gateSize;
    const float odd[] = {0.0f,    -0.0f,    1e-9f,  -3e-6f, 5e-4f, -9999.0f,  9999.0f,
                         3100.0f, -3080.0f, 1e-40f, -32.0f, kNan,  HUGE_VALF, -HUGE_VALF};
    const std::size_t step = scan.cells() / 97 + 1;
    for (std::size_t k = 0; k * step < scan.cells(); ++k) {
        const std::size_t i = k * step;
        scan.zhh[i] = odd[k % std::size(odd)];
        if (k % 3 != 0) {
            scan.ccl[i] = k % 2 == 0 ? 5.0f : kNan;
        }
        if (k % 5 == 0) {
            scan.rhv[i] = kNan;
        }
    }
    for (std::size_t g = 0; g < static_cast<std::size_t>(ngates); ++g) {
        const auto level = [&](int ray) -> float& {
            return scan
                .fzl[static_cast<std::size_t>(ray % nrays) * static_cast<std::size_t>(ngates) + g];
        };
        level(1) = kNan;
        level(2) = 0.0f;
        level(3) = g % 2 == 0 ? kNan : 1200.0f + static_cast<float>(g);
        level(4) = 500.0f;
    }
    return scan;
}

TEST(AttenuationStage, SameBitsAsThePlainDefinition) {
    struct Case {
        int nrays, ngates;
        float gateSize;
        int algorithm, windowGates, windowRays;
        double leastRise;
    };
    const Case cases[] = {{11, 400, 250.0f, 4, 17, 1, 20.0}, {9, 333, 137.3f, 4, 5, 3, 2.0},
                          {9, 300, 250.0f, 3, 17, 1, 5.0},   {9, 300, 250.0f, 5, 17, 1, 5.0},
                          {9, 300, 250.0f, 6, 0, 0, 20.0},   {5, 300, 250.0f, 7, 1, 1, 5.0},
                          {5, 200, 250.0f, -1, 9, 1, 5.0},   {5, 200, 250.0f, 4, 9, 1, kNan},
                          {5, 21, 250.0f, 4, 1, 1, -1e9},    {5, 22, 250.0f, 4, 1, 1, -1e9},
                          {1, 1, 250.0f, 4, 17, 1, 20.0},    {5, 300, 250.0f, 12, 1, 1, 5.0}};
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << "algorithm " << test.algorithm << ", " << test.nrays
                                        << " x " << test.ngates);
        PolarScan scan = oddScan(test.nrays, test.ngates, test.gateSize);
        Crres c;
        fillContext(c, scan);
        c.attenuationalg = test.algorithm;
        c.gates2ave_pdp = test.windowGates;
        c.rays2ave_pdp = test.windowRays;
        c.minphaserise = test.leastRise;
        literal::PipelineSettings settings;
        settings.attenuation = test.algorithm;
        settings.windows[2][0] = test.windowGates;
        settings.windows[2][1] = test.windowRays;
        settings.leastRise = test.leastRise;
        const std::string printed = run(c);
        EXPECT_EQ(printed, literal::correctAttenuation(scan, settings));
        expectSame(c, scan);
    }
}

TEST(AttenuationStage, DiagnosticFieldsAreNamedCopiesOfThePhase) {
    Crres c;
    fillContext(c, makeRainScan(3, 60, 1));
    c.pdp.nrecords = 5;
    c.pdp.year = 2021;
    run(c);
    struct Expected {
        Cpluvek* record;
        const char *name, *units;
    };
    const Expected fields[] = {{&c.dpdp, "Dpdp", "deg"}, {&c.acoef, "a", "-"},
                               {&c.bcoef, "b", "-"},     {&c.alpha, "alpha", "-"},
                               {&c.ta, "TA", "dB"},      {&c.pdpc, "PdpC", "deg"},
                               {&c.ah, "Ah", "dB/km"},   {&c.kdp, "KDP", "deg/km"}};
    for (const Expected& field : fields) {
        EXPECT_STREQ(field.record->name, field.name);
        EXPECT_STREQ(field.record->units, field.units);
        EXPECT_EQ(field.record->nrecords, 1);
        EXPECT_EQ(field.record->nsets, 5);
        EXPECT_EQ(field.record->year, 2021);
    }
    EXPECT_TRUE(sameBits(fieldOf(c.kdp), fieldOf(c.pdp)));
}

TEST(AttenuationStage, MissingInputsAreReportedAndNothingIsTouched) {
    Cpluvek Crres::*const inputs[] = {&Crres::zhh, &Crres::pdp, &Crres::fzl, &Crres::ccl,
                                      &Crres::rhv};
    const PolarScan scan = makeRainScan(4, 80, 2);
    for (std::size_t i = 0; i < std::size(inputs); ++i) {
        for (const bool absent : {true, false}) {
            if (i == 0 && !absent) {
                continue;  // its sizes are the scan's
            }
            SCOPED_TRACE(testing::Message() << "input " << i << (absent ? " absent" : " short"));
            Crres c;
            fillContext(c, scan);
            Cpluvek& input = c.*inputs[i];
            if (absent) {
                delete[] input.data;
                input.data = nullptr;
            } else {
                input.nrays -= 1;
            }
            EXPECT_EQ(run(c), "Some input variables are missing!\n");
            EXPECT_EQ(c.dpdp.data, nullptr);
            EXPECT_EQ(c.kdp.data, nullptr);
            c.pdp.nrays = 4;
            const bool phaseKept = c.pdp.data == nullptr || sameBits(fieldOf(c.pdp), scan.pdp);
            EXPECT_TRUE(phaseKept);
        }
    }
    for (int Cpluvek::*dimension : {&Cpluvek::ngates, &Cpluvek::nrays}) {
        Crres c;
        fillContext(c, scan);
        c.zhh.*dimension = 0;
        EXPECT_EQ(run(c), "Some input variables are missing!\n");
        c.zhh.*dimension = -3;
        EXPECT_EQ(run(c), "Some input variables are missing!\n");
    }
}

TEST(AttenuationStage, LargerRecordsAreReadWithTheScansSizes) {
    PolarScan scan = makeRainScan(4, 120, 3);
    Crres c;
    fillContext(c, scan);
    literal::Field wide = scan.pdp;
    wide.resize(5 * 130, 77.0f);
    fillField(c.pdp, 130, 5, wide);
    c.attenuationalg = 4;
    c.minphaserise = 0.0;
    run(c);
    literal::PipelineSettings settings;
    settings.leastRise = 0.0;
    literal::correctAttenuation(scan, settings);
    EXPECT_TRUE(sameBits(fieldOf(c.zhh), scan.zhh));
    EXPECT_EQ(c.ta.ngates, 130);
    const std::vector<float> ta(c.ta.data, c.ta.data + scan.cells());
    EXPECT_TRUE(sameBits(ta, scan.ta));
    EXPECT_EQ(c.pdp.data[4 * 120], 77.0f) << "past the scan";
}

TEST(AttenuationStage, WithoutAnglesTheBeamIsHorizontal) {
    PolarScan scan = makeRainScan(3, 300, 4);
    scan.elevation = 0.0f;
    Crres c;
    fillContext(c, scan);
    delete[] c.zhh.angles;
    c.zhh.angles = nullptr;
    c.attenuationalg = 4;
    run(c);
    literal::correctAttenuation(scan, {});
    EXPECT_TRUE(sameBits(fieldOf(c.zhh), scan.zhh));
}

/*
 * Constant rain along every ray: with specific attenuation k (one way) the measured reflectivity is
 * Z - 2 k r, the phase 2 k r / alpha. Ranges count from the middle of gate 0, so that gate g has
 * been attenuated by g + 1 gates, as the correction counts them.
 */
struct ConstantRain {
    float dbz;
    double alpha, a, b;

    double attenuation() const { return a * std::pow(std::pow(10.0, 0.1 * dbz), b); }

    PolarScan scan(int nrays, int ngates) const {
        PolarScan scan;
        scan.ngates = ngates;
        scan.nrays = nrays;
        for (int i = 0; i < nrays * ngates; ++i) {
            const double pia = 2.0 * attenuation() * 0.25 * (i % ngates + 1);
            scan.zhh.push_back(static_cast<float>(static_cast<double>(dbz) - pia));
            scan.pdp.push_back(static_cast<float>(30.0 + pia / alpha));
            scan.rhv.push_back(0.99f);
            scan.fzl.push_back(1e6f);
            scan.ccl.push_back(0.0f);
        }
        return scan;
    }
};

TEST(AttenuationStage, GatesFromTheMeltingLayerOnGetTheWholeAttenuation) {
    const int ngates = 251, path = 160;
    const ConstantRain rain{42.0f, 0.073, 3e-05, 0.78};
    PolarScan scan = rain.scan(1, ngates);
    scan.elevation = 1.5707964f;  // heights are ranges
    std::fill(scan.fzl.begin(), scan.fzl.end(), 500.0f + 250.0f * path - 1.0f);
    const literal::Field measured = scan.zhh;
    Crres c;
    fillContext(c, scan);
    c.attenuationalg = 6;
    c.gates2ave_pdp = 1;
    run(c);
    const float total = c.ta.data[0];
    EXPECT_NEAR(static_cast<double>(total), 2.0 * rain.attenuation() * 0.25 * path, 0.1);
    for (int g = 0; g < ngates; ++g) {
        const float before = measured[static_cast<std::size_t>(g)];
        EXPECT_EQ(c.ta.data[g], total);
        if (g >= path) {
            EXPECT_EQ(c.zhh.data[g], before + total) << g;
            EXPECT_EQ(c.ah.data[g], 0.0f);
            EXPECT_EQ(c.pdpc.data[g], -30.0f);
        } else {
            EXPECT_NEAR(static_cast<double>(c.zhh.data[g]), 42.0, 0.1) << g;
            EXPECT_EQ(c.acoef.data[g], 3e-05f);
        }
    }
}

TEST(AttenuationStage, PointsByAzimuthAndRange) {
    double east = 0.0, north = 0.0;
    Crres().E1N1AzmRanToE2N2(7.0, -3.0, 1.5707963267948966, 1000.0, east, north);
    EXPECT_NEAR(east, 1007.0, 1e-9);
    EXPECT_NEAR(north, -3.0, 1e-9);
}

}  // namespace
