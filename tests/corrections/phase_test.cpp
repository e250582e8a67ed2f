/* The phase of whole scans (offset, sign, unfolding) and its gaps. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/bits.h"
#include "support/literal/corrections.h"

namespace {

using clutter::test::sameBits;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr double kNanDouble = std::numeric_limits<double>::quiet_NaN();

std::size_t cells(int ngates, int nrays) {
    return static_cast<std::size_t>(ngates) * static_cast<std::size_t>(nrays);
}

/* Only the first run of each ray counts, whatever its start; NaN as a correlation qualifies. */
TEST(InitialPhase, IsTheMeanOfTheFirstRuns) {
    const int ngates = 12, nrays = 3;
    std::vector<float> phidp(cells(ngates, nrays), 99.0f), rhohv(phidp.size(), 0.9f), cls;
    const auto setRun = [&](int ray, int start, float phase, float correlation) {
        for (int k = 0; k < 3; ++k) {
            phidp[cells(ngates, ray) + static_cast<std::size_t>(start + k)] = phase;
            rhohv[cells(ngates, ray) + static_cast<std::size_t>(start + k)] = correlation;
        }
    };
    setRun(0, 1, 10.0f, 0.9000001f);
    setRun(0, 6, 70.0f, 0.95f);
    setRun(2, 8, 24.0f, kNan);
    for (const float correlation : rhohv) {
        cls.push_back(correlation == 0.9f ? kNan : 0.0f);
    }
    Cradarpro radar;
    EXPECT_EQ(radar.GetInitialPDP(phidp.data(), rhohv.data(), ngates, nrays, 3), 17.0f);
    EXPECT_EQ(radar.GetInitialPDP_usingCPI(phidp.data(), cls.data(), ngates, nrays, 3), 17.0f);
}

TEST(InitialPhase, KnownOffsetNeedsATenthOfTheRays) {
    const int ngates = 60, nrays = 100;
    Cradarpro radar;
    for (const int rays : {9, 10}) {
        std::vector<float> phidp(cells(ngates, nrays), 500.0f), cls(phidp.size(), 3.0f);
        for (int r = 0; r < rays; ++r) {
            for (int g = 20; g < 30; ++g) {
                phidp[cells(ngates, r) + static_cast<std::size_t>(g)] = 42.0f;
                cls[cells(ngates, r) + static_cast<std::size_t>(g)] = 0.0f;
            }
        }
        const float offset =
            radar.GetInitialPDP_usingCPI(phidp.data(), cls.data(), ngates, nrays, 10);
        EXPECT_EQ(offset, rays == 10 ? 42.0f : 0.0f);
        radar.CorrectPDPOffset(phidp.data(), ngates, nrays, offset);
        EXPECT_EQ(phidp[25], rays == 10 ? 0.0f : 42.0f);
    }
}

TEST(InitialPhase, RunsStartBeforeTheLastWindow) {
    Cradarpro radar;
    std::vector<float> phidp(30, 7.0f), cls(30, 3.0f), rhohv(30, 0.1f);
    std::fill(cls.begin() + 20, cls.end(), 0.0f);
    EXPECT_EQ(radar.GetInitialPDP_usingCPI(phidp.data(), cls.data(), 30, 1, 10), 0.0f);
    cls[19] = 0.0f;
    EXPECT_EQ(radar.GetInitialPDP_usingCPI(phidp.data(), cls.data(), 30, 1, 10), 7.0f);
    std::fill(rhohv.begin(), rhohv.begin() + 10, kNan);
    EXPECT_EQ(radar.GetInitialPDP(phidp.data(), rhohv.data(), 30, 1, 10), 7.0f);
    for (const int nwin : {0, -1, 30, 1000}) {
        EXPECT_EQ(radar.GetInitialPDP_usingCPI(phidp.data(), cls.data(), 30, 1, nwin), 0.0f);
    }
    EXPECT_EQ(radar.GetInitialPDP(nullptr, rhohv.data(), 30, 1, 10), 0.0f);
    EXPECT_EQ(radar.GetInitialPDP(phidp.data(), rhohv.data(), 0, 1, 10), 0.0f);
    EXPECT_EQ(radar.GetInitialPDP_usingCPI(phidp.data(), nullptr, 30, 1, 10), 0.0f);
    radar.CorrectPDPOffset(nullptr, 30, 1, 5.0f);
    radar.CorrectPDPOffset(phidp.data(), 30, -1, 5.0f);
    EXPECT_EQ(phidp[0], 7.0f);
}

TEST(SignInversion, EveryValueChangesSign) {
    std::vector<float> phidp = {1.5f, -2.0f, 0.0f, kNan, -HUGE_VALF, 3.0f};
    Cradarpro().InvertPDP(phidp.data(), 3, 2);
    EXPECT_TRUE(sameBits(phidp, {-1.5f, 2.0f, -0.0f, kNan, HUGE_VALF, -3.0f}));
}

TEST(Unfolding, SameBitsAsThePlainDefinition) {
    std::mt19937 random(32);
    std::normal_distribution<float> normal(0.0f, 3.0f);
    Cradarpro radar;
    int unfolded = 0;
    for (int round = 0; round < 200; ++round) {
        const int ngates = 1 + static_cast<int>(random() % 220);
        const int nrays = 1 + static_cast<int>(random() % 4);
        std::vector<float> phidp, cls;
        for (int r = 0; r < nrays; ++r) {
            const int fold = static_cast<int>(random() % static_cast<unsigned>(ngates));
            const float jump = 240.0f + static_cast<float>(random() % 130);
            for (int g = 0; g < ngates; ++g) {
                phidp.push_back(normal(random) + (g >= fold ? round % 2 ? jump : -jump : 0.0f));
                if (random() % 400 == 0) {
                    phidp.back() = kNan;
                }
                cls.push_back(random() % 6 == 0 ? 5.0f : random() % 50 == 0 ? kNan : 0.0f);
            }
        }
        std::vector<float> expected = phidp;
        const std::vector<float> before = phidp;
        literal::unfold(expected.data(), cls.data(), ngates, nrays);
        radar.CorrectPDPFolding(phidp.data(), cls.data(), ngates, nrays);
        ASSERT_TRUE(sameBits(phidp, expected)) << round;
        unfolded += sameBits(phidp, before) ? 0 : 1;
    }
    EXPECT_GT(unfolded, 40);
}

/* A clean step of J shows as J (1 - 1/21) at its first gate. */
TEST(Unfolding, CleanSteps) {
    const struct {
        float jump;
        int at, ngates;
        int foldsAt;  // -1: not found
    } steps[] = {
        {250.0f, 50, 120, -1},  {262.0f, 50, 120, -1}, {263.0f, 50, 120, 50},
        {-263.0f, 50, 120, 50}, {360.0f, 50, 120, 44}, {263.0f, 20, 120, 20},
        {263.0f, 19, 120, -1},  {263.0f, 99, 120, 99}, {263.0f, 100, 120, -1},
        {400.0f, 20, 40, -1},
    };
    Cradarpro radar;
    for (const auto& step : steps) {
        std::vector<float> phidp(static_cast<std::size_t>(step.ngates), 10.0f);
        std::fill(phidp.begin() + step.at, phidp.end(), 10.0f + step.jump);
        std::vector<float> expected = phidp, cls(phidp.size(), 0.0f);
        cls.back() = 5.0f;
        for (int g = step.foldsAt; step.foldsAt >= 0 && g < step.ngates - 1; ++g) {
            expected[static_cast<std::size_t>(g)] += 360.0f;
        }
        radar.CorrectPDPFolding(phidp.data(), cls.data(), step.ngates, 1);
        EXPECT_EQ(phidp, expected) << step.jump << " at " << step.at;
    }
    radar.CorrectPDPFolding(nullptr, nullptr, 5, 5);
}

TEST(PhaseGaps, KnownRays) {
    Cradarpro radar;
    std::vector<double> out(5);
    const std::vector<double> in = {0, 9, 9, 9, 40}, mask = {0, 1, 1, 1, 0};
    radar.interpPDP(in.data(), mask.data(), 5, out.data());
    EXPECT_EQ(out, (std::vector<double>{0, 9, 20, 30, 40}));
    std::vector<double> inPlace = in;
    const std::vector<double> nanMask = {0, kNanDouble, 1, 1, 0};
    radar.interpPDP(inPlace.data(), nanMask.data(), 5, inPlace.data());
    EXPECT_EQ(inPlace, (std::vector<double>{0, 9, 20, 30, 40}));
    const std::vector<double> unseen = {-99999.0, 9, 9, 9, 40};
    radar.interpPDP(unseen.data(), mask.data(), 5, out.data());
    EXPECT_EQ(out, (std::vector<double>{-99999.0, 0, 0, 0, 40})) << "counts as no valid gate";
    EXPECT_EQ(radar.interpPDP(in.data(), mask.data(), 0, out.data()), 0);
    const std::vector<double> late = {1, 1, 1, 0, 1};
    radar.interpPDP(in.data(), late.data(), 5, out.data());
    EXPECT_EQ(out, (std::vector<double>{0, 0, 0, 9, 40}));

    std::vector<double> ray = {1, 1, 1, 1, 10, 20, 30, 1, 1, 1}, filled(10);
    std::vector<double> gaps = {1, 1, 1, 1, 0, 0, 0, 1, 1, 1};
    radar.CompletePhidp(ray.data(), filled.data(), 10, 3, 2, gaps.data());
    EXPECT_EQ(filled, (std::vector<double>{1, 1, 15, 15, 10, 20, 30, 25, 25, 1}));
    std::vector<double> same = ray;
    radar.CompletePhidp(same.data(), same.data(), 10, 3, 2, gaps.data());
    EXPECT_EQ(same, filled);
    for (const int nfill : {1, 0, -5}) {
        radar.CompletePhidp(ray.data(), filled.data(), 10, nfill, 2, gaps.data());
        EXPECT_EQ(filled, ray) << nfill;
    }
    radar.CompletePhidp(ray.data(), filled.data(), 10, 2147483647, 2147483647, gaps.data());
    EXPECT_EQ(filled[0], 1.0) << "gate 0 is never reached";
    EXPECT_EQ(filled[1], (10 + 20 + 30 + 1 + 1 + 1) / 6.0);
    radar.CompletePhidp(ray.data(), filled.data(), 10, 3, 0, gaps.data());
    EXPECT_EQ(filled, ray) << "nothing to average";
}

/* A gap to the end of a long ray: its end is looked for once. */
TEST(PhaseGaps, TrailingGapIsLeftInLinearTime) {
    const int n = 2000000;
    std::vector<double> in(n, 4.0), mask(n, 1.0), out(n);
    mask[0] = 0.0;
    Cradarpro().interpPDP(in.data(), mask.data(), n, out.data());
    EXPECT_EQ(out, in);
}

}  // namespace
