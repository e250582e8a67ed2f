/* Filters of profiles and matrices: closed forms, ends, and the literal definitions. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/bits.h"
#include "support/literal/toolkit.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using Floats = std::vector<float>;
using Doubles = std::vector<double>;

template <class T>
std::vector<T> draw(std::size_t n, std::mt19937& random) {
    std::normal_distribution<T> normal(1, 10);
    std::vector<T> values;
    while (values.size() < n) {
        values.push_back(random() % 60 == 0 ? T(kNan) : normal(random));
    }
    return values;
}

TEST(Conv, CentredSumsWithZeroEnds) {
    CDSP dsp;
    Floats x = {1, 2, 3, 4, 5}, h = {1, 1, 1};
    EXPECT_EQ(dsp.conv(x.data(), h.data(), 5, 3), 5);
    EXPECT_EQ(x, (Floats{0, 6, 9, 12, 0}));
    Doubles profile = {1, 2, 3, 4}, even = {10, 1}, y(4, -1.0);
    dsp.conv(profile.data(), even.data(), y.data(), 4, 2);
    EXPECT_EQ(y, (Doubles{12, 23, 34, 40})) << "the last term past the end is dropped";
    dsp.conv(profile.data(), even.data(), y.data(), 4, 0);
    EXPECT_EQ(y, Doubles(4, 0.0));
    Doubles lopsided = {1, 10, 100};  // not reversed
    dsp.conv(profile.data(), lopsided.data(), profile.data(), 4, 3);
    EXPECT_EQ(profile, (Doubles{0, 321, 432, 0}));
}

TEST(Conv, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(41);
    CDSP dsp;
    for (int round = 0; round < 300; ++round) {
        const int n = 1 + static_cast<int>(random() % 80);
        const int m = 1 + static_cast<int>(random() % 90);  // also longer than the profile
        Doubles x = draw<double>(static_cast<std::size_t>(n), random);
        Doubles h = draw<double>(static_cast<std::size_t>(m), random);
        Doubles y(x.size(), -1.0);
        dsp.conv(x.data(), h.data(), y.data(), n, m);
        ASSERT_TRUE(clutter::test::sameBits(y, literal::correlate(x, h))) << n << ", " << m;

        Floats narrow = draw<float>(static_cast<std::size_t>(n), random);
        Floats kernel = draw<float>(static_cast<std::size_t>(m), random);
        const Doubles wide = literal::correlate(Doubles(narrow.begin(), narrow.end()),
                                                Doubles(kernel.begin(), kernel.end()));
        ASSERT_EQ(dsp.conv(narrow.data(), kernel.data(), n, m), n);
        ASSERT_TRUE(clutter::test::sameBits(narrow, Floats(wide.begin(), wide.end())));
    }
}

TEST(Filter, MiddleOfTheFullConvolution) {
    std::mt19937 random(42);
    CDSP dsp;
    Floats x = {1, 2, 3}, ones = {1, 1, 1}, reversed = {100, 10, 1};
    dsp.Filter(x.data(), ones.data(), 3, 3);
    EXPECT_EQ(x, (Floats{3, 6, 5}));
    x = {1, 2, 3};
    dsp.Filter(x.data(), reversed.data(), 3, 3);
    EXPECT_EQ(x, (Floats{210, 321, 32}));
    for (int round = 0; round < 300; ++round) {
        const std::size_t n = 1 + random() % 60;
        const std::size_t m = 1 + random() % 90;
        Floats profile = draw<float>(n, random);
        Floats h = draw<float>(m, random);
        const Floats full = literal::fullConvolution(profile, h);
        const auto first = full.begin() + static_cast<std::ptrdiff_t>((m - 1) / 2);
        const Floats middle(first, first + static_cast<std::ptrdiff_t>(n));
        dsp.Filter(profile.data(), h.data(), static_cast<int>(n), static_cast<int>(m));
        ASSERT_TRUE(clutter::test::sameBits(profile, middle)) << n << ", " << m;
    }
}

TEST(Filtering, IndicesAndInitialConditions) {
    CDSP dsp;
    Floats x = {1, 2, 3, 4}, y(3, -1.0f), one = {1};
    EXPECT_EQ(dsp.filtering(y.data(), x.data(), one.data(), one.data(), 3, 1, 1, 0, 0), 3);
    EXPECT_EQ(y, (Floats{2, 3, 4})) << "b[0] meets the next sample";
    // y[i] = x[i + 1] + 10 x[i] + 100 x[i - 1], xinit 7 only where i - 1 < 0.
    Floats b = {1, 10, 100};
    dsp.filtering(y.data(), x.data(), one.data(), b.data(), 3, 1, 3, 0, 7);
    EXPECT_EQ(y, (Floats{712, 123, 234}));
    // a[1] meets the value being formed and counts for nothing; y[i] = x[i + 1] - y[i - 1] / 2.
    Floats a = {99, 50, 0.5f};
    dsp.filtering(y.data(), x.data(), a.data(), one.data(), 3, 3, 1, 8, 0);
    EXPECT_EQ(y, (Floats{2 - 4, 3 + 1, 4 - 2}));
}

TEST(Derive, FivePointsAndItsEnds) {
    CDSP dsp;
    Floats line(8);
    std::iota(line.begin(), line.end(), 0.0f);
    dsp.Derive(line.data(), 8, 1.0f);
    EXPECT_EQ(line, (Floats{1, 1, 1, 1, 1, 1, 0, 0}));
    Floats quartic;  // exact for polynomials up to the fourth degree
    for (int i = -3; i <= 3; ++i) {
        quartic.push_back(std::pow(0.5f * static_cast<float>(i), 4.0f));
    }
    dsp.Derive(quartic.data(), 7, 0.5f);
    EXPECT_EQ(quartic, (Floats{-0.5f, -0.5f, -0.5f, 0, 0.5f, 0, 0})) << "4 x^3";
}

TEST(Derive, FewSamples) {
    const Floats expected[] = {{}, {1}, {1, 2}, {0, 0, 0}, {0, 0, 0, 0}};
    for (int n = 0; n <= 4; ++n) {
        Floats x = {1, 2, 3, 4};
        CDSP().Derive(x.data(), n, 1.0f);
        x.resize(static_cast<std::size_t>(n));
        EXPECT_EQ(x, expected[n]);
    }
}

TEST(HammingCoef, LowPassOfUnitGain) {
    CDSP dsp;
    for (const int order : {2, 8, 30}) {
        Doubles h(static_cast<std::size_t>(order) + 1);
        dsp.HammingCoef(h.data(), 0.25, order);
        EXPECT_NEAR(dsp.GetSum(h.data(), order + 1), 1.0, 1e-14);
        for (int k = 0; k <= order; ++k) {
            EXPECT_NEAR(h[static_cast<std::size_t>(k)], h[static_cast<std::size_t>(order - k)],
                        1e-15);
        }
    }
    // Ideal response 1 / pi, 1 / 2, 1 / pi under the window 0.08, 1, 0.08.
    Floats h(3);
    dsp.HammingCoef(h.data(), 0.25f, 2);
    const double side = 0.08 / 3.141592653589793;
    EXPECT_FLOAT_EQ(h[0], static_cast<float>(side / (0.5 + 2 * side)));
    EXPECT_FLOAT_EQ(h[1], static_cast<float>(0.5 / (0.5 + 2 * side)));
}

TEST(HammingCoef, OddAndNegativeOrders) {
    Doubles h(4, 5.0);
    CDSP().HammingCoef(h.data(), 0.2, 3);
    EXPECT_EQ(h[3], 0.0);
    EXPECT_NEAR(h[0] + h[1] + h[2], 1.0, 1e-15);
    CDSP().HammingCoef(h.data(), 0.2, -1);
    EXPECT_EQ(h[3], 0.0);
}

TEST(GetSum, InTheArraysPrecision) {
    CDSP dsp;
    Floats x = {1e8f, 1.0f, -1e8f};
    Doubles wide(x.begin(), x.end());
    EXPECT_EQ(dsp.GetSum(x.data(), 3), 0.0f);
    EXPECT_EQ(dsp.GetSum(wide.data(), 3), 1.0);
    EXPECT_EQ(dsp.GetSum(x.data(), 0), 0.0f);
    EXPECT_EQ(dsp.GetSum(wide.data(), -1), 0.0);
}

TEST(Conv2, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(43);
    CDSP dsp;
    for (int round = 0; round < 300; ++round) {
        const auto size = [&random](unsigned most) {
            return 1 + static_cast<int>(random() % most);
        };
        const int nx = size(40), ny = size(12), kx = size(6), ky = size(6);
        Floats in = draw<float>(static_cast<std::size_t>(nx * ny), random);
        Floats k = draw<float>(static_cast<std::size_t>(kx * ky), random);
        Floats out(in.size(), -1.0f);
        const Floats expected = literal::correlateImage(in, nx, ny, k, kx, ky);
        dsp.conv2(in.data(), nx, ny, k.data(), kx, ky, out.data());
        ASSERT_TRUE(clutter::test::sameBits(out, expected))
            << nx << " x " << ny << ", kernel " << kx << " x " << ky;
        dsp.conv2(in.data(), nx, ny, k.data(), kx, ky, in.data());
        ASSERT_TRUE(clutter::test::sameBits(in, expected)) << "in place";
    }
}

TEST(Conv2, NotReversedAndBorderKept) {
    Floats in = {1, 2, 3, 4, 5, 6, 7, 8, 9}, k = {100, 10, 1, 0, 0, 0, 0, 0, 0}, out(9);
    CDSP().conv2(in.data(), 3, 3, k.data(), 3, 3, out.data());
    EXPECT_EQ(out, (Floats{1, 2, 3, 4, 123, 6, 7, 8, 9}));
}

TEST(SmoothDataMtx, SameBitsAsTheLiteralDefinition) {
    std::mt19937 random(44);
    for (int round = 0; round < 300; ++round) {
        const int rows = 1 + static_cast<int>(random() % 12);
        const int columns = 1 + static_cast<int>(random() % 40);
        const int size = 1 + static_cast<int>(random() % 6);
        Floats x = draw<float>(static_cast<std::size_t>(rows * columns), random);
        const Floats expected = literal::boxMean(x, rows, columns, size);
        CDSP().SmoothDataMtx(x.data(), rows, columns, size);
        ASSERT_TRUE(clutter::test::sameBits(x, expected))
            << rows << " x " << columns << ", " << size;
    }
}

TEST(SmoothDataMtx, OnlyInnerElementsAndEvenSizes) {
    CDSP dsp;
    Floats x = {1, 2, 3, 4, 50, 6, 7, 8, 9};
    dsp.SmoothDataMtx(x.data(), 3, 3, 3);
    EXPECT_EQ(x, (Floats{1, 2, 3, 4, 10, 6, 7, 8, 9}));
    Floats ones(9, 1.0f);
    dsp.SmoothDataMtx(ones.data(), 3, 3, 2);
    EXPECT_EQ(ones[4], 9.0f / 4.0f) << "nine members, divided by four";
    for (const int size : {0, -3, 2147483647}) {
        dsp.SmoothDataMtx(x.data(), 3, 3, size);
    }
    dsp.SmoothDataMtx(nullptr, 3, 3, 3);
    EXPECT_EQ(x[4], 10.0f);
}

}  // namespace
