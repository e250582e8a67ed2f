#include "scan/synthetic/synthetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <ostream>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "options/membership_dir.h"
#include "report/scores.h"
#include "scan/synthetic/synthetic_random.h"

namespace cli {

using namespace scan;

namespace {

constexpr float kRain = 0.0f, kClutter = 5.0f, kNoise = 3.0f;

const SyntheticScan& scanOfSeed5() {
    static const SyntheticScan scan = makeSyntheticScan(5);
    return scan;
}

double snrOf(const SyntheticScan& scan, std::size_t i) {
    const int gate = std::max<int>(1, static_cast<int>(i % scan.ngates));
    return scan.zhh[i] - 20.0 * std::log10(gate * scan.gateSpacingM / 1000.0) +
           scan.radarConstantDb;
}

double percentile(std::vector<double> values, double share) {
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(share * (values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

/* Values of a field at the echoes of one class; NaN left out. */
std::vector<double> at(const SyntheticScan& scan, const std::vector<double>& field, float truth) {
    std::vector<double> values;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (scan.truth[i] != truth || std::isnan(field[i])) continue;
        if (truth != kNoise && snrOf(scan, i) < scan.minSnrDb) continue;
        values.push_back(field[i]);
    }
    return values;
}

/* As the classifier sees it: only echoes above the threshold take part. */
std::vector<double> textureOf(const SyntheticScan& scan, const std::vector<double>& field) {
    std::vector<float> values(field.begin(), field.end()), mask(field.size()), out(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        mask[i] = snrOf(scan, i) < scan.minSnrDb ? 3.0f : 0.0f;
    }
    CDSP().GetNxNPointStdWithMask(values.data(), mask.data(), scan.ngates, scan.nrays, out.data(),
                                  5, 3);
    return {out.begin(), out.end()};
}

TEST(Random, IsTheKnownGenerator) {
    /* First value of splitmix64 from state 0. */
    EXPECT_EQ(mixBits(0x9e3779b97f4a7c15u), 0xe220a8397b1dcdafu);
    Random random(0);
    for (int i = 0; i < 1000; ++i) {
        const double u = random.uniform();
        EXPECT_TRUE(u > 0.0 && u < 1.0);
    }
}

TEST(Random, HasTheMomentsOfItsDistributions) {
    constexpr int kDraws = 200000, kShape = 16;
    const std::vector<std::tuple<const char*, std::function<double(Random&)>, double, double>>
        cases{
            {"normal", [](Random& r) { return r.normal(); }, 0.0, 1.0},
            {"gamma", [](Random& r) { return r.gamma(kShape); }, kShape, kShape},
            {"power", [](Random& r) { return std::norm(r.complexNormal()); }, 1.0, 1.0},
            {"uniform", [](Random& r) { return r.uniform(-1.0, 5.0); }, 2.0, 3.0},
        };
    for (const auto& [name, draw, mean, variance] : cases) {
        Random random(11);
        double sum = 0.0, squares = 0.0;
        for (int i = 0; i < kDraws; ++i) {
            const double value = draw(random);
            sum += value;
            squares += value * value;
        }
        const double measured = sum / kDraws;
        EXPECT_NEAR(measured, mean, 5.0 * std::sqrt(variance / kDraws)) << name;
        EXPECT_NEAR(squares / kDraws - measured * measured, variance, 0.03 * variance) << name;
    }
}

TEST(SmoothPattern, IsSmoothCentredAndOfUnitVariance) {
    const SmoothPattern pattern(3, 10.0, 3, 0.5);
    double sum = 0.0, squares = 0.0, steepest = 0.0;
    int n = 0;
    for (double x = -1500.0; x < 1500.0; x += 7.3) {
        for (double y = -300.0; y < 300.0; y += 7.3, ++n) {
            const double value = pattern.at(x, y);
            sum += value;
            squares += value * value;
            steepest = std::max(steepest, std::abs(pattern.at(x + 0.01, y) - value));
        }
    }
    EXPECT_NEAR(sum / n, 0.0, 0.1);
    EXPECT_NEAR(squares / n, 1.0, 0.15);
    EXPECT_LT(steepest, 0.03); /* across lattice lines too */
}

TEST(SyntheticScan, IsTheSameForTheSameSeedOnly) {
    const SyntheticScan a = makeSyntheticScan(9, 30, 200), b = makeSyntheticScan(9, 30, 200);
    const SyntheticScan c = makeSyntheticScan(10, 30, 200);
    EXPECT_EQ(a.zhh, b.zhh);
    EXPECT_EQ(a.phidp, b.phidp);
    EXPECT_EQ(a.truth, b.truth);
    EXPECT_NE(a.zhh, c.zhh);
    EXPECT_NE(a.truth, c.truth);
}

TEST(SyntheticScan, WorksForAnySize) {
    for (const auto& [nrays, ngates] : {std::pair{1, 1}, {1, 700}, {2, 3}, {720, 2}}) {
        const SyntheticScan scan = makeSyntheticScan(1, nrays, ngates);
        EXPECT_EQ(scan.zhh.size(), static_cast<std::size_t>(nrays) * ngates);
        EXPECT_EQ(scan.azimuthDeg.size(), static_cast<std::size_t>(nrays));
        EXPECT_EQ(scan.rangeM.size(), static_cast<std::size_t>(ngates));
        EXPECT_TRUE(std::all_of(scan.zhh.begin(), scan.zhh.end(),
                                [](double dBZ) { return std::isfinite(dBZ); }));
    }
    EXPECT_THROW(makeSyntheticScan(1, 0, 5), std::invalid_argument);
    EXPECT_THROW(makeSyntheticScan(1, 5, -1), std::invalid_argument);
}

TEST(SyntheticScan, HoldsAllClassesAndPhysicalValues) {
    const SyntheticScan& scan = scanOfSeed5();
    const auto share = [&](float code) {
        return static_cast<double>(std::count(scan.truth.begin(), scan.truth.end(), code)) /
               scan.truth.size();
    };
    EXPECT_GT(share(kRain), 0.2);
    EXPECT_GT(share(kNoise), 0.2);
    EXPECT_GT(share(kClutter), 0.02);
    EXPECT_LT(share(kClutter), 0.15);
    EXPECT_DOUBLE_EQ(share(kRain) + share(kNoise) + share(kClutter), 1.0);
    for (std::size_t i = 0; i < scan.truth.size(); ++i) {
        ASSERT_LE(std::abs(scan.velocity[i]), scan.nyquist);
        ASSERT_LE(std::abs(scan.phidp[i]), 180.0);
        ASSERT_TRUE(scan.rhohv[i] >= 0.0 && scan.rhohv[i] <= 1.0);
        ASSERT_GE(scan.width[i], 0.0);
        ASSERT_TRUE(scan.likelihood[i] > 0.0 && scan.likelihood[i] < 1.0);
        ASSERT_LT(scan.zhh[i], 90.0);
    }
}

TEST(SyntheticScan, NoiseFollowsRangeAndTheThresholdFindsIt) {
    const SyntheticScan& scan = scanOfSeed5();
    /* The weakest gates hold nothing but noise: 0 dB, less its scatter, near and far alike. */
    for (const int from : {250, 500, 900}) {
        std::vector<double> snr;
        for (std::size_t i = 0; i < scan.truth.size(); ++i) {
            const int gate = static_cast<int>(i % scan.ngates);
            if (scan.truth[i] != kNoise || gate < from || gate >= from + 100) continue;
            snr.push_back(snrOf(scan, i));
        }
        ASSERT_GT(snr.size(), 1000u);
        EXPECT_NEAR(percentile(snr, 0.1), -0.5, 1.5) << "gates from " << from;
    }
    std::size_t agreed = 0;
    for (std::size_t i = 0; i < scan.truth.size(); ++i) {
        agreed += (snrOf(scan, i) < scan.minSnrDb) == (scan.truth[i] == kNoise);
    }
    EXPECT_GT(agreed, 0.98 * scan.truth.size());
}

/* Medians lie where they lie in measured scans; ranges leave room for another drawing of the
 * scene. */
TEST(SyntheticScan, LooksLikeMeasuredScans) {
    const SyntheticScan& scan = scanOfSeed5();
    const auto sdZ = textureOf(scan, scan.zhh), sdZdr = textureOf(scan, scan.zdr);
    const auto sdPhi = textureOf(scan, scan.phidp), sdRho = textureOf(scan, scan.rhohv);
    const struct {
        const char* name;
        const std::vector<double>& field;
        float truth;
        double share, low, high;
    } cases[] = {
        {"SD(Z) of clutter", sdZ, kClutter, 0.5, 4.0, 10.0},
        {"SD(Z) of rain", sdZ, kRain, 0.5, 0.9, 2.5},
        {"SD(ZDR) of clutter", sdZdr, kClutter, 0.5, 2.0, 4.5},
        {"SD(ZDR) of rain", sdZdr, kRain, 0.5, 0.2, 0.5},
        {"SD(PhiDP) of clutter", sdPhi, kClutter, 0.5, 45.0, 95.0},
        {"SD(PhiDP) of rain", sdPhi, kRain, 0.5, 1.0, 4.0},
        {"SD(RhoHV) of clutter", sdRho, kClutter, 0.5, 0.15, 0.25},
        {"SD(RhoHV) of rain", sdRho, kRain, 0.5, 0.002, 0.02},
        {"RhoHV of rain", scan.rhohv, kRain, 0.5, 0.96, 0.995},
        {"RhoHV of clutter", scan.rhohv, kClutter, 0.5, 0.5, 0.9},
        {"RhoHV of noise", scan.rhohv, kNoise, 0.1, 0.0, 0.3},
        {"velocity of clutter", scan.velocity, kClutter, 0.5, -0.1, 0.1},
        {"velocity of clutter, upper", scan.velocity, kClutter, 0.8, 0.0, 1.0},
        {"velocity of rain, lower", scan.velocity, kRain, 0.1, -16.0, -8.0},
        {"velocity of rain, upper", scan.velocity, kRain, 0.9, 8.0, 16.0},
        {"width of rain", scan.width, kRain, 0.5, 1.0, 3.0},
        {"width of clutter", scan.width, kClutter, 0.5, 0.2, 1.0},
        {"LDR of rain", scan.ldr, kRain, 0.5, -30.0, -25.0},
        {"LDR of clutter", scan.ldr, kClutter, 0.5, -14.0, -9.0},
        {"likelihood at clutter", scan.likelihood, kClutter, 0.5, 0.45, 0.8},
        {"likelihood at rain", scan.likelihood, kRain, 0.5, 0.05, 0.3},
        {"ZDR of rain", scan.zdr, kRain, 0.5, 0.2, 1.2},
        {"PhiDP of rain starts at the offset", scan.phidp, kRain, 0.05, 35.0, 41.0},
        {"Z of clutter, upper", scan.zhh, kClutter, 0.95, 50.0, 65.0},
        {"Z of rain, upper", scan.zhh, kRain, 0.99, 42.0, 56.0},
    };
    for (const auto& row : cases) {
        const double value = percentile(at(scan, row.field, row.truth), row.share);
        EXPECT_TRUE(value >= row.low && value <= row.high) << row.name << ": " << value;
    }
}

double skill(SyntheticScan scan, double mask) {
    const std::string directory = membershipDirectory("");
    double params[3] = {scan.radarConstantDb, scan.minSnrDb, mask};
    std::vector<double> classes(scan.truth.size(), -1.0);
    clutterclassifier(directory.c_str(), scan.nrays, scan.ngates, scan.zhh.data(), scan.zdr.data(),
                      scan.phidp.data(), scan.rhohv.data(), scan.velocity.data(), scan.ldr.data(),
                      scan.likelihood.data(), scan.rangeM.data(), scan.azimuthDeg.data(),
                      &scan.elevationDeg, params, classes.data());
    return scoresOf(compare(scan.truth, classes)).hss;
}

TEST(SyntheticScan, IsClassifiedWithSkillByTheDefaultMembershipFunctions) {
    for (const std::uint64_t seed : {1, 2, 5}) {
        const SyntheticScan scan = makeSyntheticScan(seed);
        const double all = skill(scan, 255), textures = skill(scan, 15);
        EXPECT_GE(all, 0.9) << "seed " << seed;
        EXPECT_GE(textures, 0.8) << "seed " << seed;
        /* Perfect skill would mean that the scan is no test. */
        EXPECT_LT(all, 0.99) << "seed " << seed;
    }
}

}  // namespace
}  // namespace cli
