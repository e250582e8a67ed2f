/*
 * Beam geometry, power patterns and vertical profiles.
 */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <random>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/bits.h"
#include "support/literal/corrections.h"
#include "support/profile_files.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::sameBits;
using literal::Values;

constexpr double kDeg = std::numbers::pi / 180.0;
constexpr double kEarth = 6.378e6;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(BeamGeometry, KnownTriangles) {
    Cradarpro radar;
    double range[] = {0.0, 1000.0, 100000.0}, height[3], back[3], angle[3];
    radar.h_beam(range, 0.3, height, 3);
    EXPECT_EQ(height[0], 0.0);
    radar.h_beam(range, std::numbers::pi / 2, height, 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(height[i], range[i], 1e-6);
    }
    // Tangent to the Earth: h = sqrt(a^2 + r^2) - a, very nearly r^2 / 2a.
    radar.h_beam(range, 0.0, height, 3);
    EXPECT_NEAR(height[2], 1e10 / (2 * kEarth), 0.1);
    for (const double elevation : {0.5 * kDeg, 5.0 * kDeg, 45.0 * kDeg, 89.0 * kDeg}) {
        radar.h_beam(range, elevation, height, 3);
        radar.r_beam(height, elevation, back, 3);
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(back[i], range[i], 1e-3) << elevation;
        }
        for (int i = 1; i < 3; ++i) {
            radar.gama(height + i, range[i], angle, 3 - i);
            EXPECT_NEAR(angle[0], elevation, 1e-8 + 1e-8 * std::tan(elevation));
        }
    }
    // Downwards the beam meets a height below the antenna twice: the farther meeting counts.
    height[0] = -100.0;
    radar.r_beam(height, -1.0 * kDeg, back, 1);
    radar.h_beam(back, -1.0 * kDeg, height + 1, 1);
    EXPECT_NEAR(height[1], -100.0, 1e-6);
    EXPECT_GT(back[0], kEarth * std::sin(1.0 * kDeg));
    height[0] = -1e6;
    radar.r_beam(height, 0.0, back, 1);
    EXPECT_TRUE(std::isnan(back[0])) << "never reached";
}

struct Pattern {
    double *power = nullptr, *angles = nullptr, *powerH = nullptr, *heights = nullptr;
    int nangles = -1, nheights = -1;

    Pattern() = default;
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;
    ~Pattern() {
        for (double* array : {power, angles, powerH, heights}) {
            delete[] array;
        }
    }
    void compute(double beamwidth, double range, double elevation) {
        Cradarpro().BeamPowerProfile(beamwidth, range, elevation, &power, &angles, nangles, &powerH,
                                     &heights, nheights);
    }
};

TEST(BeamPattern, HalfPowerHalfABeamOffTheAxis) {
    for (const double beamwidth : {0.5, 1.0, 2.0}) {
        Pattern p;
        p.compute(beamwidth * kDeg, 50000.0, 1.0 * kDeg);
        ASSERT_EQ(p.nangles, 1000);
        EXPECT_NEAR(p.angles[0], -5.0 * kDeg, 1e-12);
        EXPECT_EQ(p.angles[500], 0.0);
        EXPECT_NEAR(std::accumulate(p.power, p.power + 1000, 0.0), 1.0, 1e-12);
        // Half power each way, a quarter both ways.
        const int half = static_cast<int>(std::lround(50 * beamwidth));
        EXPECT_NEAR(p.power[500 + half] / p.power[500], 0.25, 0.01) << beamwidth;
        EXPECT_DOUBLE_EQ(p.power[500 + half], p.power[500 - half]);

        const double rise =
            50000.0 * std::sin((1.0 + beamwidth / 2) * kDeg) - 50000.0 * std::sin(1.0 * kDeg);
        ASSERT_EQ(p.nheights % 2, 0);
        EXPECT_NEAR(p.nheights * 7.5 / 2, rise, 7.6);
        EXPECT_EQ(p.heights[0], -p.nheights / 2 * 7.5);
        EXPECT_EQ(p.heights[p.nheights / 2], 0.0);
        EXPECT_NEAR(std::accumulate(p.powerH, p.powerH + p.nheights, 0.0), 1.0, 1e-12);
        // Seen at 50 km, a point at the height of the antenna is r / 2a below the horizon.
        const int top =
            static_cast<int>(std::max_element(p.powerH, p.powerH + p.nheights) - p.powerH);
        EXPECT_NEAR(p.heights[top], std::min(-p.heights[0] - 7.5, 50000.0 * 50000.0 / 2 / kEarth),
                    10.0);
    }
}

TEST(BeamPattern, NoHeightsWhereTheyMakeNoSense) {
    Pattern p;
    p.compute(1.0 * kDeg, 30000.0, 5.0 * kDeg);
    EXPECT_GT(p.nheights, 0);
    const double odd[][3] = {{1.0 * kDeg, 30000.0, 90.0 * kDeg}, {1.0 * kDeg, 30000.0, 120 * kDeg},
                             {1.0 * kDeg, 0.0, 5.0 * kDeg},      {30.0 * kDeg, 5e6, 5.0 * kDeg},
                             {1.0 * kDeg, kNan, 5.0 * kDeg},     {0.0, 30000.0, 5.0 * kDeg},
                             {kNan, 30000.0, 5.0 * kDeg},        {-1.0 * kDeg, 3e4, 5.0 * kDeg}};
    for (const auto& [beamwidth, range, elevation] : odd) {
        p.compute(beamwidth, range, elevation);  // replaces the arrays that are there
        EXPECT_EQ(p.nheights, 0) << range << ' ' << elevation;
        EXPECT_EQ(p.nangles, 1000);
    }
}

class Profiles : public testing::Test {
  protected:
    int read() {
        return radar_.GetVPR(&vpr_, nprofiles_, nlevels_, reflevel_, dh_, path_.data(), 0);
    }
    ~Profiles() override { delete[] vpr_; }

    clutter::test::TempDir dir_;
    std::string path_ = dir_.file("profiles.txt");
    Cradarpro radar_;
    double* vpr_ = nullptr;
    int nprofiles_ = -7, nlevels_ = -7, reflevel_ = -7;
    double dh_ = -7.0;
};

TEST_F(Profiles, AreReadLevelByLevel) {
    EXPECT_EQ(read(), 0) << "no file";
    EXPECT_TRUE(vpr_ == nullptr && nprofiles_ == -7 && dh_ == -7.0);
    clutter::test::writeProfiles(path_);
    ASSERT_EQ(read(), 1);
    EXPECT_TRUE(nprofiles_ == 60 && nlevels_ == 1800 && reflevel_ == 600 && dh_ == 7.5);
    for (const auto& [j, i] : {std::pair{0, 0}, {59, 0}, {0, 1799}, {59, 1799}, {17, 600}}) {
        const double expected = std::pow(10.0, clutter::test::profileDb(j, i) / 10.0);
        EXPECT_NEAR(vpr_[i + 1800 * j], expected, 1e-9 * expected) << j << ' ' << i;
    }
}

TEST_F(Profiles, MissingValuesAreZeroDecibels) {
    std::ofstream(path_) << "10 text 20dB nan 1e999 -1e999";
    ASSERT_EQ(read(), 1);
    EXPECT_EQ(vpr_[0], 10.0);
    EXPECT_EQ(vpr_[1800], 1.0);
    EXPECT_EQ(vpr_[3600], 100.0);
    EXPECT_TRUE(std::isnan(vpr_[5400]));
    EXPECT_TRUE(std::isinf(vpr_[7200]));
    EXPECT_EQ(vpr_[9000], 0.0);
    EXPECT_EQ(vpr_[10800], 1.0);
    EXPECT_EQ(vpr_[1800 * 60 - 1], 1.0);
}

TEST_F(Profiles, CorrectionHasTheSameBitsAsThePlainDefinition) {
    clutter::test::writeProfiles(path_);
    ASSERT_EQ(read(), 1);
    const Values profiles(vpr_, vpr_ + 60 * 1800);
    std::mt19937 random(71);
    std::uniform_real_distribution<double> uniform;
    int changed = 0, gates = 0;
    for (const double elevation : {0.5 * kDeg, 2.0 * kDeg, 20.0 * kDeg, 90.0 * kDeg}) {
        Values z, range, freezing;
        for (int i = 0; i < 400; ++i) {
            range.push_back(i % 3 != 0 && i > 0 ? range.back() : 250.0 * (random() % 600));
            z.push_back(std::pow(10.0, 5.0 * uniform(random) - 0.2));
            if (i % 50 == 7) {
                z.back() = kNan;
            }
            double height = 0.0;
            radar_.h_beam(&range.back(), elevation, &height, 1);
            const double off = i % 4 == 0 ? 0.0 : 2400.0 * (uniform(random) - 0.5);
            freezing.push_back(i % 60 == 9 ? kNan : height + off);
        }
        const Values expected =
            literal::matchProfiles(z, range, freezing, elevation, 1.0 * kDeg, profiles);
        Values out(z.size(), -7.0);
        ASSERT_EQ(radar_.VPRCorrection(out.data(), z.data(), range.data(), freezing.data(), 400,
                                       elevation, 1.0 * kDeg, path_.data(), 0),
                  1);
        ASSERT_TRUE(sameBits(out, expected)) << elevation;
        for (std::size_t i = 0; i < z.size(); ++i) {
            changed += sameBits(z[i], out[i]) ? 0 : 1;
        }
        gates += 400;
        radar_.VPRCorrection(z.data(), z.data(), range.data(), freezing.data(), 400, elevation,
                             1.0 * kDeg, path_.data(), 0);
        ASSERT_TRUE(sameBits(z, expected)) << "in place";
    }
    EXPECT_GT(changed, gates / 20);
}

/* A gate in the bright band of profile 30 is replaced by that profile's value at the ground. */
TEST_F(Profiles, BrightBandIsReplacedByTheGround) {
    clutter::test::writeProfiles(path_);
    double range = 20000.0, height = 0.0;
    radar_.h_beam(&range, 5.0 * kDeg, &height, 1);
    double freezing = height + 40 * 7.5, out = 0.0;
    double z = std::pow(10.0, clutter::test::profileDb(30, 560) / 10.0);
    // A beam so narrow that it sees one level, or nearly.
    ASSERT_EQ(radar_.VPRCorrection(&out, &z, &range, &freezing, 1, 5.0 * kDeg, 0.02 * kDeg,
                                   path_.data(), 0),
              1);
    EXPECT_NEAR(10.0 * std::log10(out), clutter::test::profileDb(30, 0), 0.8);

    const double edges[] = {height + 1000.0, height - 1000.0, height + 5000.0, kNan};
    for (double edge : edges) {
        radar_.VPRCorrection(&out, &z, &range, &edge, 1, 5.0 * kDeg, 0.02 * kDeg, path_.data(), 0);
        EXPECT_EQ(out, z) << "outside the melting layer";
    }
    for (double weak : {1.0, 0.5, 0.0, -3.0}) {
        radar_.VPRCorrection(&out, &weak, &range, &freezing, 1, 5.0 * kDeg, 0.02 * kDeg,
                             path_.data(), 0);
        EXPECT_EQ(out, weak) << "not above 0 dBZ";
    }
    // So wide a beam sees more levels than there are.
    radar_.VPRCorrection(&out, &z, &range, &freezing, 1, 5.0 * kDeg, 45.0 * kDeg, path_.data(), 0);
    EXPECT_EQ(out, z);
}

TEST_F(Profiles, OneDecibelAwayIsTooFar) {
    std::ofstream file(path_);
    // All profiles are equal except at the ground: the first counts.
    for (int k = 0; k < 60 * 1800; ++k) {
        file << (k < 60 ? 3.0 + 0.1 * k : 20.0) << ' ';
    }
    file.close();
    double range = 20000.0, height = 0.0, out = 0.0;
    radar_.h_beam(&range, 5.0 * kDeg, &height, 1);
    for (const auto& [db, matches] :
         {std::pair{20.0, true}, {20.99, true}, {21.01, false}, {19.01, true}, {18.99, false}}) {
        double z = std::pow(10.0, db / 10.0);
        radar_.VPRCorrection(&out, &z, &range, &height, 1, 5.0 * kDeg, 1.0 * kDeg, path_.data(), 0);
        EXPECT_NEAR(10.0 * std::log10(out), matches ? 3.0 : db, 1e-9) << db;
    }
}

TEST_F(Profiles, WithoutAFileNothingIsWritten) {
    double range = 1e4, freezing = 1000.0, z = 100.0, out = -7.0;
    EXPECT_EQ(radar_.VPRCorrection(&out, &z, &range, &freezing, 1, 0.1, 0.02, nullptr, 0), 0);
    EXPECT_EQ(radar_.VPRCorrection(&out, &z, &range, &freezing, 1, 0.1, 0.02, path_.data(), 0), 0);
    EXPECT_EQ(out, -7.0);
}

}  // namespace
