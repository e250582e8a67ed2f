// Membership functions from labelled scans: labels, curves, weights, and the whole training.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "scan/class_codes.h"
#include "scan/classes/classify_sweep.h"
#include "scan/classes/inputs.h"
#include "scan/membership/check.h"
#include "scan/membership/train.h"
#include "scan/synthetic/synthetic.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::TempDir;
using scan::Label;
using scan::RatioCurve;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

scan::Sweep oneRay(std::vector<scan::Field> fields) {
    scan::Sweep sweep;
    sweep.nrays = 1;
    sweep.ngates = static_cast<int>(fields.at(0).values.size());
    sweep.fields = std::move(fields);
    return sweep;
}

TEST(LabelRule, SaysWhatIsClutterAndWhatIsWeather) {
    const scan::Sweep sweep = oneRay({{"ZT", "", {30, 30, 30, 30, kNan, 25}},
                                      {"DZ", "", {10, 29, 25, kNan, 3, 35}},
                                      {"CM", "", {1, 0, kNan, 2, 0, 0}}});
    constexpr Label kC = Label::kClutter, kW = Label::kWeather, kN = Label::kNotJudged;
    const struct {
        const char* clutter;
        const char* weather;
        std::vector<Label> labels;
    } cases[] = {
        {"CM", "", {kC, kW, kW, kC, kW, kW}},        {"CM>1", "", {kW, kW, kN, kC, kW, kW}},
        {" CM >= 1", "", {kC, kW, kN, kC, kW, kW}},  {"DZ<10", "", {kW, kW, kW, kN, kC, kW}},
        {"DZ<=10", "", {kC, kW, kW, kN, kC, kW}},    {"ZT-DZ>10", "", {kC, kW, kN, kC, kN, kN}},
        {"CM", "ZT-DZ<2", {kC, kW, kN, kC, kN, kN}}, {"all", "", {kC, kC, kC, kC, kC, kC}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(scan::LabelRule(c.clutter, c.weather).labels(sweep), c.labels) << c.clutter;
    }
    for (const char* wrong : {"", ">1", "CM>", "CM>x", "ZT-DZ>0", "ZT->3", "-DZ>3", "CM>1 2"}) {
        EXPECT_THROW(scan::LabelRule{wrong}, std::invalid_argument) << wrong;
    }
    EXPECT_THROW(scan::LabelRule("XX").labels(sweep), std::runtime_error);
}

std::vector<float> lognormal(double median, double sigma, int count, unsigned seed) {
    std::mt19937 random(seed);
    std::lognormal_distribution<float> draw(static_cast<float>(std::log(median)),
                                            static_cast<float>(sigma));
    std::vector<float> values(static_cast<std::size_t>(count));
    std::generate(values.begin(), values.end(), [&] { return draw(random); });
    return values;
}

/* Two lognormals of the same width s: the log ratio is ln(m2 / m1) / s^2 times ln(middle / x). */
TEST(RatioCurve, IsThatOfTwoLognormals) {
    const scan::InputAxis& axis = *scan::axisOf("sZhh");
    const scan::ClassValues values = {lognormal(2, 0.6, 40000, 1), lognormal(6, 0.6, 40000, 2)};
    const auto curve = RatioCurve::fit(axis, {values});
    ASSERT_TRUE(curve);
    const double middle = std::sqrt(2.0 * 6.0), slope = std::log(3.0) / (0.6 * 0.6);
    for (const float x : {1.8f, 2.5f, 3.5f, 4.5f, 6.5f}) {
        const double expected = slope * std::log(middle / static_cast<double>(x));
        EXPECT_NEAR(curve->at(x), expected, 0.1 + 0.1 * std::fabs(expected)) << x;
    }
    EXPECT_EQ(curve->at(kNan), 0);
    EXPECT_EQ(curve->at(64), 0) << "beyond the physical range";
    for (int point = 1; point < RatioCurve::kPoints; ++point) {
        EXPECT_LE(curve->ratio(point), curve->ratio(point - 1));
        EXPECT_LE(std::fabs(curve->ratio(point)), 4);
    }
    // A second scan that is the other way round: as much for as against, however few its values.
    const scan::ClassValues turned = {lognormal(6, 0.6, 4000, 3), lognormal(2, 0.6, 4000, 4)};
    const auto both = RatioCurve::fit(axis, {values, turned});
    EXPECT_NEAR(both->at(1.5f), 0, 0.1);
    EXPECT_NEAR(both->at(8), 0, 0.1);
    EXPECT_FALSE(RatioCurve::fit(axis, {{values.precipitation, {kNan, 1000}}}));
    // Few values say little.
    const auto few = RatioCurve::fit(axis, {{lognormal(2, 0.6, 10, 5), lognormal(6, 0.6, 10, 6)}});
    EXPECT_LT(few->at(1), 1);
}

/* Gates whose log odds are slope * x + offset in the mean of both classes. */
scan::WeightScan oddsOf(double slope, double offset, int copies) {
    scan::WeightScan scan;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> uniform;
    for (int i = 0; i < copies; ++i) {
        scan.inputs.push_back(i);
    }
    for (int gate = 0; gate < 40000; ++gate) {
        const double x = 6 * uniform(random) - 3;
        const bool weather = uniform(random) < 1 / (1 + std::exp(-slope * x - offset));
        scan.isWeather.push_back(weather ? 1 : 0);
        for (int i = 0; i < copies; ++i) {
            scan.features.insert(scan.features.end(), {static_cast<float>(x), 1.0f});
        }
    }
    return scan;
}

TEST(FitWeights, FindsTheOddsAtTheShareThatIsGiven) {
    const scan::WeightScan scan = oddsOf(0.8, 0.3, 1);
    const auto weather = static_cast<double>(
        std::count(scan.isWeather.begin(), scan.isWeather.end(), std::uint8_t{1}));
    const double odds = weather / (static_cast<double>(scan.gates()) - weather);
    const auto found = scan::fitWeights({scan}, 1, 0.2);
    EXPECT_NEAR(found[0].weight, 0.8, 0.03);
    EXPECT_NEAR(found[0].lean, 0.3 + std::log(0.8 / 0.2) - std::log(odds), 0.05);
    EXPECT_EQ(scan::fitWeights({oddsOf(2.5, 0, 1)}, 1, 0.5)[0].weight, scan::kMaxWeight);
    EXPECT_EQ(scan::fitWeights({oddsOf(-1, 0, 1)}, 1, 0.5)[0].weight, scan::kMinWeight);
    // Twice the same input counts less each time, and neither alone nor together is far off.
    const auto twice = scan::fitWeights({oddsOf(0.8, 0, 2)}, 2, 0.5);
    EXPECT_NEAR(twice[0].weight, twice[1].weight, 1e-6);
    EXPECT_LT(twice[0].weight, 0.75);
    EXPECT_GT(twice[0].weight, 0.4);
}

/* The synthetic scan with its truth as a field; noise has none. */
struct MadeScan {
    scan::Scan scan;
    explicit MadeScan(unsigned seed, int rays = 80, int gates = 300) {
        const scan::SyntheticScan made = scan::makeSyntheticScan(seed, rays, gates);
        scan.hasRadarConstant = true;
        scan.radarConstantDb = made.radarConstantDb;
        scan.path = "made" + std::to_string(seed);
        scan::Sweep sweep;
        sweep.nrays = rays;
        sweep.ngates = gates;
        sweep.gateSpacingM = made.gateSpacingM;
        sweep.fixedAngleDeg = made.elevationDeg;
        sweep.azimuthDeg = made.azimuthDeg;
        for (int ray = 0; ray < rays; ++ray) {
            sweep.azimuthDeg[static_cast<std::size_t>(ray)] = 360.0 * ray / rays;
        }
        sweep.elevationDeg.assign(sweep.azimuthDeg.size(), made.elevationDeg);
        const auto add = [&](const char* name, const auto& values) {
            sweep.fields.push_back({name, "", {values.begin(), values.end()}});
        };
        add("ZH", made.zhh);
        add("ZDR", made.zdr);
        add("PHIDP", made.phidp);
        add("RHOHV", made.rhohv);
        add("TRUTH", made.truth);
        scan.sweeps.push_back(sweep);
    }
    scan::Sweep& sweep() { return scan.sweeps[0]; }

    scan::LabelledScan labelled(int mask) {
        scan::ClassifyOptions options;
        options.mask = mask;
        return labelledScan(scan, sweep(), options, scan::LabelRule("TRUTH>4"));
    }
};

TEST(Training, MakesFunctionsThatClassifyAnotherScan) {
    MadeScan first(1), second(2), other(3);
    const auto training = scan::trainMembership(
        {first.labelled(CLUTTER_TEXTURES), second.labelled(CLUTTER_TEXTURES)}, {});
    ASSERT_EQ(training.inputs.size(), 4u);
    ASSERT_EQ(training.unused.size(), 2u);
    for (const scan::ScanScores& scores : training.unused) {
        EXPECT_GT(scores.scores.hss, 0.8);
        EXPECT_GT(scores.scores.kept, scores.scores.keptStrict);
    }
    const TempDir directory;
    EXPECT_EQ(scan::writeTables(training.inputs, directory.path()).size(), 8u);
    EXPECT_TRUE(scan::checkMembership(directory.path()).findings.empty());

    // The library decides with the files as the training does.
    const scan::LabelledScan labelled = other.labelled(CLUTTER_TEXTURES);
    const scan::TrainScores scores = scoreInputs(training.inputs, labelled, {5, 3});
    EXPECT_GT(scores.hss, 0.8);
    scan::ClassifyOptions options;
    options.mask = CLUTTER_TEXTURES;
    options.membership = directory.path();
    const auto result = classifySweep(other.scan, other.sweep(), options);
    double found = 0, clutter = 0, kept = 0, weather = 0;
    for (std::size_t i = 0; i < labelled.cells(); ++i) {
        const bool isClutter = labelled.labels[i] == Label::kClutter;
        const bool isWeather = labelled.labels[i] == Label::kWeather;
        clutter += isClutter ? 1 : 0;
        weather += isWeather ? 1 : 0;
        found += isClutter && result.classes[i] == scan::kGroundClutter ? 1 : 0;
        kept += isWeather && result.classes[i] == scan::kPrecipitation ? 1 : 0;
    }
    EXPECT_NEAR(found / clutter, scores.found, 0.002);
    EXPECT_NEAR(kept / weather, scores.kept, 0.002);
}

TEST(Training, RefusesLabelsThatAreTooFew) {
    const auto refusal = [](scan::LabelledScan labelled) -> std::string {
        try {
            scan::trainMembership({labelled}, {});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    };
    MadeScan made(1);
    const scan::LabelledScan labelled = made.labelled(CLUTTER_ZHH_TEXTURE);
    EXPECT_EQ(refusal(labelled), "");
    const auto without = [&](Label label, int fromRay) {
        scan::LabelledScan less = labelled;
        for (std::size_t i = static_cast<std::size_t>(fromRay) * 300; i < less.cells(); ++i) {
            less.labels[i] = less.labels[i] == label ? Label::kNotJudged : less.labels[i];
        }
        return less;
    };
    EXPECT_THAT(refusal(without(Label::kClutter, 0)), HasSubstr("0 of clutter"));
    EXPECT_THAT(refusal(without(Label::kWeather, 0)), HasSubstr("0 of weather"));
    scan::LabelledScan oneSector = without(Label::kClutter, 10);
    for (std::size_t i = 0; i < 10 * 300; ++i) {
        oneSector.labels[i] = i % 3 == 0 ? Label::kClutter : oneSector.labels[i];
    }
    EXPECT_THAT(refusal(oneSector), HasSubstr("one sector"));
}

TEST(Training, WarnsOfInputsThatAreNotWhatTheySeem) {
    MadeScan made(1);
    scan::LabelledScan labelled = made.labelled(CLUTTER_TEXTURES);
    // A filter took the differential reflectivity of the clutter; the phase is upside down.
    std::vector<float>& filtered = labelled.inputs[1];
    std::vector<float>& turned = labelled.inputs[2];
    for (std::size_t i = 0; i < labelled.cells(); ++i) {
        filtered[i] = labelled.labels[i] == Label::kClutter ? kNan : filtered[i];
        turned[i] = 180 - turned[i];
    }
    const auto training = scan::trainMembership({labelled}, {});
    EXPECT_EQ(training.inputs.size(), 3u);
    EXPECT_THAT(training.warnings,
                testing::IsSupersetOf({HasSubstr("zdr-texture is left out: it has a value on 0 %"),
                                       HasSubstr("pdp-texture: clutter lies where weather is")}));
}

TEST(WindowMeans, CountEchoesOnlyAndWrapInACircle) {
    scan::LabelledScan made;
    made.rays = 3;
    made.gates = 3;
    made.echo = {1, 1, 0, 0, 1, 0, 0, 0, 1};
    const std::vector<float> values = {1, 2, kNan, 9, 4, 9, 9, 9, 8};
    EXPECT_THAT(windowMeans(made, values, {3, 1}),
                ElementsAre(1.5f, 1.5f, 2.0f, 4.0f, 4.0f, 4.0f, 0.0f, 8.0f, 8.0f));
    EXPECT_FLOAT_EQ(windowMeans(made, values, {1, 3})[1], 3.0f);
    EXPECT_FLOAT_EQ(windowMeans(made, values, {3, 3})[0], 7.0f / 3);
    EXPECT_FLOAT_EQ(windowMeans(made, values, {1, 3})[2], 8.0f) << "from the last ray";
    made.sector = true;
    EXPECT_FLOAT_EQ(windowMeans(made, values, {1, 3})[2], 0.0f);
}

}  // namespace
