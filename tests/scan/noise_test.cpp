/* The noise floor of made-up scans whose floor is known, and where it is taken from. */
#include "scan/noise/noise_floor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

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

scan::NoiseEstimate estimate(const std::vector<float>& values, const MadeScan& scan,
                             const std::vector<float>& correlation = {}) {
    return scan::estimateNoise({{values, correlation.empty() ? nullptr : &correlation, scan.nrays,
                                 scan.ngates, kSpacingM}});
}

TEST(NoiseEstimate, FindsTheNoiseWhateverElseIsInTheScan) {
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
        const scan::NoiseEstimate result = estimate(c.scan.build(), c.scan);
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNoiseGates) << c.what;
        EXPECT_NEAR(result.radarConstantDb, -c.scan.floorDb, c.tolerance) << c.what;
        EXPECT_EQ(result.minSnrDb, scan::kEchoSnrDb) << c.what;
    }
}

/* 600 gates are 32 rings, of which the nearest 4 do not count. A level between two bins of half a
 * decibel is known to a quarter; 8 of 28 rings must agree on it, and what lies below the rest is
 * none of theirs. */
TEST(NoiseEstimate, IsWhereEnoughRingsAgree) {
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
        const scan::NoiseEstimate result = build(row.deepRings);
        EXPECT_EQ(result.evidence, row.evidence) << row.deepRings;
        EXPECT_NEAR(result.radarConstantDb, row.constant, 1e-4) << row.deepRings;
    }
}

TEST(NoiseEstimate, GatesWithoutEchoAreNotNoise) {
    const MadeScan scan;
    for (const float marker : {kMissing, -32.0F, -999.0F}) {
        std::vector<float> values = scan.build();
        for (size_t i = 0; i < values.size(); i += 8) {
            values[i] = marker;
        }
        EXPECT_NEAR(estimate(values, scan).radarConstantDb, -scan.floorDb, 0.5) << marker;
    }
}

/* A threshold near the noise leaves the upper edge of it, as level as the noise itself. */
TEST(NoiseEstimate, TheEdgeOfCensoredValuesIsNotNoise) {
    const MadeScan scan{.rainShare = 0, .thresholdDb = 0.5};
    EXPECT_EQ(estimate(scan.build(), scan).evidence, scan::NoiseEvidence::kLowerEnvelope);
    std::vector<float> values = MadeScan{.rainShare = 0}.build();
    std::fill_n(values.begin(), values.size() / 3, kMissing);
    EXPECT_EQ(estimate(values, scan).evidence, scan::NoiseEvidence::kNoiseGates)
        << "a blanked sector";
}

/* The upper sweeps of a volume show the noise that rain hides in the lowest. */
TEST(NoiseEstimate, TakesAllSweepsTogether) {
    const MadeScan low{.thresholdDb = 3}, high{.rainShare = 0};
    const std::vector<float> values[] = {low.build(), high.build()};
    const auto inputOf = [&](int sweep) {
        return scan::NoiseInput{values[sweep], nullptr, low.nrays, low.ngates, kSpacingM};
    };
    EXPECT_EQ(scan::estimateNoise({inputOf(0)}).evidence, scan::NoiseEvidence::kLowerEnvelope);
    const scan::NoiseEstimate both = scan::estimateNoise({inputOf(0), inputOf(1)});
    EXPECT_EQ(both.evidence, scan::NoiseEvidence::kNoiseGates);
    EXPECT_EQ(both.sweeps, 2);
    EXPECT_EQ(both.agreeingRings, 28);
    EXPECT_GT(both.rings, both.agreeingRings);
    EXPECT_NEAR(both.radarConstantDb, -high.floorDb, 0.5);
}

TEST(NoiseEstimate, WhereNoiseWasRemovedEverythingLeftIsEcho) {
    const MadeScan scan{.rainShare = 0.5, .thresholdDb = 12};
    const std::vector<float> values = scan.build();
    const scan::NoiseEstimate result = estimate(values, scan);
    EXPECT_EQ(result.evidence, scan::NoiseEvidence::kLowerEnvelope);
    EXPECT_EQ(result.minSnrDb, scan::kEveryValue);
}

/* Rain of one strength out to the last gate looks like noise in every ring except for its slope. */
TEST(NoiseEstimate, WidespreadRainIsNotNoise) {
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
TEST(NoiseEstimate, HighlyCorrelatedEchoIsNotNoise) {
    const MadeScan scan{.floorDb = -5, .rainShare = 0};
    const std::vector<float> values = scan.build();
    for (const float correlation : {0.98F, 0.5F, kMissing}) {
        const scan::NoiseEstimate result =
            estimate(values, scan, std::vector<float>(values.size(), correlation));
        EXPECT_EQ(result.evidence == scan::NoiseEvidence::kNoiseGates, correlation != 0.98F)
            << correlation;
    }
}

TEST(NoiseEstimate, TooFewValuesGiveNoEstimateAndMakeEverythingEcho) {
    const MadeScan scan{.nrays = 3, .ngates = 5};
    const std::vector<float> sizes[] = {
        std::vector<float>(15, kMissing),
        std::vector<float>(15, 20.0F),
        {kMissing, 3, 4, 5, 6, kMissing, kMissing, 2, 1, 0, 3, 4, 5, 6, 7},
    };
    for (const std::vector<float>& values : sizes) {
        const scan::NoiseEstimate result = estimate(values, scan);
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNothing);
        EXPECT_LT(result.minSnrDb, -300);
    }
}

/* The floors that were found by hand when these two scans were labelled. */
TEST(NoiseEstimate, AgreesWithMeasuredScans) {
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
        const scan::NoiseEstimate result = scan::estimateNoise(
            {{sweep.fields.at(0).values, nullptr, sweep.nrays, sweep.ngates, sweep.gateSpacingM}});
        EXPECT_EQ(result.evidence, scan::NoiseEvidence::kNoiseGates) << c.file;
        EXPECT_NEAR(result.radarConstantDb, c.constant, 1.5) << c.file;
    }
}

class NoiseFloor : public testing::Test {
  protected:
    /* A sweep of the made scan with a field of true ratios, which the map hides at first. */
    void make(const MadeScan& made) {
        scan::Sweep sweep;
        sweep.nrays = made.nrays;
        sweep.ngates = made.ngates;
        sweep.gateSpacingM = kSpacingM;
        scan::Field ratios{"SNRH", "dB", {}};
        const std::vector<float> values = made.build();
        for (size_t i = 0; i < values.size(); ++i) {
            const auto gate = static_cast<int>(i) % made.ngates;
            const double loss = 20 * std::log10(std::max(gate, 1) * kSpacingM / 1000);
            ratios.values.push_back(static_cast<float>(values[i] - loss - made.floorDb));
        }
        sweep.fields = {{"DBZH", "dBZ", values}, ratios};
        scan_.sweeps = {sweep};
    }

    scan::NoiseFloor find() {
        const scan::FieldChoice fields = chooseFields(scan_.sweeps[0], map_);
        scan::NoiseEstimates estimates(scan_, map_);
        return findNoiseFloor(scan_, scan_.sweeps[0], fields, given_, estimates);
    }

    scan::Field& field(size_t at) { return scan_.sweeps[0].fields[at]; }

    scan::Scan scan_;
    scan::FieldMap map_ = scan::parseFieldMap("SNRH=none");
    scan::GivenNoise given_;
};

TEST_F(NoiseFloor, IsTakenFromTheBestSource) {
    make({});
    EXPECT_EQ(find().source, scan::NoiseSource::kEstimate);
    EXPECT_TRUE(find().warnings.empty());
    EXPECT_EQ(describeNoise(find()),
              "estimated: constant 34.8 dB from the noise in 28 of 28 rings of 1 sweep");
    scan_.hasRadarConstant = true;
    scan_.radarConstantDb = 35;
    EXPECT_EQ(find().source, scan::NoiseSource::kFile);
    EXPECT_EQ(find().minSnrDb, scan::kEchoSnrDb);
    map_.clear();
    const scan::NoiseFloor field = find();
    EXPECT_EQ(field.source, scan::NoiseSource::kSnrField);
    EXPECT_NEAR(field.radarConstantDb, 35, 1e-3);
    EXPECT_EQ(field.minSnrDb, scan::kEchoSnrDb);
    given_ = {30, 5};
    EXPECT_EQ(find().source, scan::NoiseSource::kGiven);
    EXPECT_EQ(find().minSnrDb, 5);
}

/* Three ways to know it; a given threshold counts nevertheless. */
TEST_F(NoiseFloor, KeepsEveryValueWhereTheNoiseWasRemoved) {
    make({.thresholdDb = 2});
    for (float& value : field(0).values) {
        field(0).noEchoGates.push_back(std::isnan(value));
    }
    EXPECT_EQ(find().source, scan::NoiseSource::kFormat);
    EXPECT_TRUE(find().warnings.empty());
    for (const bool marked : {true, false}) {
        field(0).noEchoGates.resize(marked ? field(0).values.size() : 0);
        EXPECT_EQ(find().minSnrDb, scan::kEveryValue);
        scan_.hasRadarConstant = true;
        scan_.radarConstantDb = 35;
        const scan::NoiseFloor constant = find();
        EXPECT_EQ(constant.minSnrDb, scan::kEveryValue);
        EXPECT_EQ(constant.polarimetricSnrDb, scan::kEchoSnrDb);
        map_.clear();
        EXPECT_TRUE(find().removed && find().snr);
        map_ = scan::parseFieldMap("SNRH=none");
        scan_.hasRadarConstant = false;
    }
    EXPECT_THAT(find().warnings, testing::ElementsAre(testing::HasSubstr("no noise was found")));
    given_.minSnrDb = 3;
    EXPECT_EQ(find().minSnrDb, 3);
}

/* Marks of a few gates do not make the noise in all others an echo. */
TEST_F(NoiseFloor, DoesNotTrustMarksAmongNoise) {
    make({});
    field(0).noEchoGates.assign(field(0).values.size(), 0);
    field(0).noEchoGates[5] = 1;
    EXPECT_EQ(find().source, scan::NoiseSource::kEstimate);
}

TEST_F(NoiseFloor, WarnsOfRatiosThatAreNone) {
    make({});
    map_.clear();
    std::vector<float>& ratios = field(1).values;
    const std::vector<float> good = ratios;
    for (size_t i = 0; i < ratios.size(); ++i) {
        ratios[i] = static_cast<float>(i % 40);
    }
    EXPECT_THAT(find().warnings, testing::ElementsAre(testing::HasSubstr("does not follow")));
    ratios = good;
    std::fill_n(ratios.begin(), ratios.size() * 2 / 3, kMissing);
    EXPECT_THAT(find().warnings, testing::ElementsAre(testing::HasSubstr("most gates")));
    EXPECT_EQ(find().source, scan::NoiseSource::kEstimate);
}

TEST_F(NoiseFloor, KeepsTheEchoWhereFewRingsShowTheNoise) {
    make({.rainShare = 0});
    std::vector<float>& values = field(0).values;
    for (size_t i = 0; i < values.size(); ++i) {
        const size_t ring = i % 600 * 32 / 600;
        values[i] = ring % 3 == 0 ? values[i] : kMissing;
        if (std::isnan(values[i]) && i % 2 == 0) {
            values[i] = 30 + static_cast<float>(i % 7);
        }
    }
    const scan::NoiseFloor few = find();
    EXPECT_THAT(few.warnings, testing::ElementsAre(testing::HasSubstr("rings only")));
    EXPECT_EQ(few.minSnrDb, 0);
}

}  // namespace
