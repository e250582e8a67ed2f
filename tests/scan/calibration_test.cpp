/* The noise floor of made-up scans whose floor is known. */
#include "scan/classes/calibration.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "scan/formats/read_scan.h"
#include "support/temp_dir.h"

namespace {

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();
constexpr double kSpacingM = 150;

/* Noise at floorDb + 20 log10(range) under rain in the given share of the rays and gates. */
struct MadeScan {
    int nrays = 90;
    int ngates = 600;
    double floorDb = -35;
    double spreadDb = 1;     // of the noise
    double rainShare = 0.3;  // of the rays, over the middle half of the gates
    double thresholdDb = -std::numeric_limits<double>::infinity();  // above the floor

    std::vector<float> build() const {
        std::mt19937 random(7);
        std::normal_distribution<double> normal;
        std::vector<float> values;
        for (int r = 0; r < nrays; ++r) {
            for (int g = 0; g < ngates; ++g) {
                const double floor = floorDb + 20 * std::log10(std::max(g, 1) * kSpacingM / 1000);
                const bool rain = r < rainShare * nrays && g > ngates / 4 && g < 3 * ngates / 4;
                const double z = rain ? 25 + 6 * std::sin(0.05 * g) + normal(random)
                                      : floor + spreadDb * normal(random);
                values.push_back(z < floor + thresholdDb ? kMissing : static_cast<float>(z));
            }
        }
        return values;
    }
};

scan::Calibration estimate(const std::vector<float>& values, const MadeScan& scan,
                           const std::vector<float>& correlation = {}) {
    return scan::estimateCalibration(values, correlation, scan.nrays, scan.ngates, kSpacingM);
}

TEST(Calibration, FindsTheNoiseWhateverElseIsInTheScan) {
    struct Case {
        const char* what;
        MadeScan scan;
        double tolerance;
    };
    const Case cases[] = {
        {"noise alone", {.rainShare = 0}, 0.5},
        {"some rain", {}, 0.5},
        {"rain in most rays", {.rainShare = 0.9}, 1},
        {"another floor", {.floorDb = -52}, 0.5},
        {"scattered noise", {.spreadDb = 4}, 2},
        {"few rays", {.nrays = 4}, 1},
        {"short rays", {.ngates = 60}, 1},
    };
    for (const Case& c : cases) {
        const scan::Calibration result = estimate(c.scan.build(), c.scan);
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNoiseGates) << c.what;
        EXPECT_NEAR(result.radarConstantDb, -c.scan.floorDb, c.tolerance) << c.what;
        EXPECT_EQ(result.minSnrDb, scan::kEchoSnrDb) << c.what;
    }
}

/* 600 gates are 32 rings, of which the nearest 4 do not count. A level between two bins of half a
 * decibel is known to a quarter; 8 of 28 rings must agree on it, and what lies below the rest is
 * none of theirs. */
TEST(Calibration, IsWhereEnoughRingsAgree) {
    const MadeScan sizes;
    const auto build = [&](int deepRings) {
        std::vector<float> values;
        for (int i = 0; i < sizes.nrays * sizes.ngates; ++i) {
            const int gate = i % sizes.ngates, ring = gate * 32 / sizes.ngates;
            const double level = ring < 4 ? -100 : ring < 32 - deepRings ? -34.8 : -44.8;
            const double range = 20 * std::log10(std::max(gate, 1) * kSpacingM / 1000);
            values.push_back(static_cast<float>(level + range));
        }
        return estimate(values, sizes);
    };
    const struct {
        int deepRings;
        scan::NoiseEvidence evidence;
        double constant;
    } cases[] = {
        {0, scan::NoiseEvidence::kNoiseGates, 34.75},
        {2, scan::NoiseEvidence::kNoiseGates, 34.75},
        {3, scan::NoiseEvidence::kLowerEnvelope, 44.8},
        {7, scan::NoiseEvidence::kLowerEnvelope, 44.8},
        {8, scan::NoiseEvidence::kNoiseGates, 44.75},
    };
    for (const auto& row : cases) {
        const scan::Calibration result = build(row.deepRings);
        EXPECT_EQ(result.evidence, row.evidence) << row.deepRings;
        EXPECT_NEAR(result.radarConstantDb, row.constant, 1e-4) << row.deepRings;
    }
}

TEST(Calibration, GatesWithoutEchoAreNotNoise) {
    const MadeScan scan;
    for (const float marker : {kMissing, -32.0F, -999.0F}) {
        std::vector<float> values = scan.build();
        for (size_t i = 0; i < values.size(); i += 3) {
            values[i] = marker;
        }
        EXPECT_NEAR(estimate(values, scan).radarConstantDb, -scan.floorDb, 0.5) << marker;
    }
}

TEST(Calibration, WhereNoiseWasRemovedEverythingLeftIsEcho) {
    const MadeScan scan{.rainShare = 0.5, .thresholdDb = 12};
    const std::vector<float> values = scan.build();
    const scan::Calibration result = estimate(values, scan);
    EXPECT_EQ(result.evidence, scan::NoiseEvidence::kLowerEnvelope);
    size_t echo = 0;
    size_t present = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        if (std::isnan(values[i])) {
            continue;
        }
        const double range = static_cast<double>(i % static_cast<size_t>(scan.ngates)) * kSpacingM;
        echo +=
            values[i] - 20 * std::log10(range / 1000) + result.radarConstantDb >= result.minSnrDb;
        ++present;
    }
    EXPECT_GT(static_cast<double>(echo), 0.95 * static_cast<double>(present));
}

/* Rain of one strength out to the last gate looks like noise in every ring, except for its slope.
 */
TEST(Calibration, WidespreadRainIsNotNoise) {
    const MadeScan sizes;
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    std::vector<float> values;
    for (int i = 0; i < sizes.nrays * sizes.ngates; ++i) {
        values.push_back(static_cast<float>(28 + normal(random)));
    }
    EXPECT_NE(estimate(values, sizes).evidence, scan::NoiseEvidence::kNoiseGates);
}

/* Rain that happens to grow with range as noise does is recognised by its correlation. */
TEST(Calibration, HighlyCorrelatedEchoIsNotNoise) {
    const MadeScan scan{.floorDb = -5, .rainShare = 0};
    const std::vector<float> values = scan.build();
    for (const float correlation : {0.98F, 0.5F, kMissing}) {
        const scan::Calibration result =
            estimate(values, scan, std::vector<float>(values.size(), correlation));
        EXPECT_EQ(result.evidence == scan::NoiseEvidence::kNoiseGates, correlation != 0.98F)
            << correlation;
    }
}

TEST(Calibration, TooFewValuesGiveNoEstimateAndMakeEverythingEcho) {
    const MadeScan scan{.nrays = 3, .ngates = 5};
    const std::vector<float> sizes[] = {
        std::vector<float>(15, kMissing),
        std::vector<float>(15, 20.0F),
        {kMissing, 3, 4, 5, 6, kMissing, kMissing, 2, 1, 0, 3, 4, 5, 6, 7},
    };
    for (const std::vector<float>& values : sizes) {
        const scan::Calibration result = estimate(values, scan);
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNothing);
        EXPECT_LT(result.minSnrDb, -300);
    }
}

/* The floors that were found by hand when these two scans were labelled. */
TEST(Calibration, AgreesWithMeasuredScans) {
    const std::string directory = clutter::test::measuredDataDir();
    if (directory.empty()) {
        GTEST_SKIP() << "no measured files";
    }
    struct Case {
        const char* file;
        double constant;
    };
    for (const Case& c :
         {Case{"boxpol_20140810_1820.uf", 36.5}, Case{"rma1_20181111_000457_el1.uf", 33.5}}) {
        const scan::Scan scan = scan::readScan(directory + "/" + c.file);
        const scan::Sweep& sweep = scan.sweeps.at(0);
        const scan::Calibration result = scan::estimateCalibration(
            sweep.fields.at(0).values, {}, sweep.nrays, sweep.ngates, sweep.gateSpacingM);
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNoiseGates) << c.file;
        EXPECT_NEAR(result.radarConstantDb, c.constant, 1.5) << c.file;
    }
}

}  // namespace
