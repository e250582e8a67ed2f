/* Rain rates of every relation, power laws, and means of a vertical scan. */
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

/* Ordinary and impossible coefficients, values of every size; the result replaces an input. */
TEST(Rainfall, AnyCoefficientsAndValues) {
    std::mt19937 random(62);
    const auto oneOf = [&](std::initializer_list<double> values) {
        return values.begin()[random() % values.size()];
    };
    const auto value = [&](float scale) {
        std::normal_distribution<float> normal;
        const float wide = scale * normal(random) * (random() % 8 == 0 ? 100.0f : 1.0f);
        return random() % 40 == 0
                   ? static_cast<float>(oneOf({0, -0.0, NAN, HUGE_VAL, -HUGE_VAL, 1e-40, -9999}))
                   : wide;
    };
    for (int round = 0; round < 200; ++round) {
        Cradarpro radar;
        const int alg = round % 5, n = 1 + static_cast<int>(random() % 700);
        for (int k = 0; k < 4 && round % 3 != 0; ++k) {
            double& c = radar.coefficients[alg][k];
            c *= oneOf({0.3, 1, 2, 10, -1, 0, 1e30, 1e-30, NAN, HUGE_VAL});
        }
        std::vector<float> zh, zdr, kdp, expected;
        for (int i = 0; i < n; ++i) {
            zh.push_back(value(30.0f));
            zdr.push_back(value(3.0f));
            kdp.push_back(std::fabs(value(1.0f)));
            expected.push_back(
                literal::rainRate(radar.coefficients[alg], alg, zh.back(), zdr.back(), kdp.back()));
        }
        std::vector<float>& out = alg == 0 || alg == 4 ? zh : alg == 1 ? zdr : kdp;
        radar.RainfallEstimation(zh.data(), zdr.data(), kdp.data(), n, alg, nullptr, 0, out.data());
        EXPECT_TRUE(sameBits(out, expected)) << alg << ", round " << round;
    }
}

/* Textbook points of each relation's default coefficients, worked out by hand. */
TEST(Rainfall, KnownRates) {
    const struct {
        int alg;
        float zh, zdr, kdp, rate;
    } points[] = {
        {0, 23.0103f, 0.0f, 0.0f, 1.0f},   // Z = 200
        {0, 39.0103f, 0.0f, 0.0f, 10.0f},  // R^1.6 = 10^1.6
        {1, 40.0f, 0.0f, 0.0f, 34.599f},   // 0.01583 * 10^3.3396
        {1, 40.0f, 1.0f, 0.0f, 14.651f},   // less 3.732 dB
        {2, 0.0f, 0.0f, 1.0f, 49.2144f},  {2, 0.0f, 1.0f, 1.0f, 26.241f},
        {3, 0.0f, 0.0f, 1.0f, 20.47f},    {3, 0.0f, 0.0f, 16.0f, 163.76f},
        {4, 40.0f, 0.0f, 0.0f, 126.01f},  // 10^(4 - 1.8996)
        {4, 40.0f, 1.0f, 0.0f, 13.501f},  // 10^(4 - 2.86963 ...)
        {-1, 40.0f, 1.0f, 1.0f, 0.0f},    {5, 40.0f, 1.0f, 1.0f, 0.0f},
        {20, 40.0f, 1.0f, 1.0f, 0.0f},
    };
    Cradarpro radar;
    for (auto point : points) {
        float rain = -7.0f;
        radar.RainfallEstimation(&point.zh, &point.zdr, &point.kdp, 1, point.alg, nullptr, 0,
                                 &rain);
        EXPECT_NEAR(rain, point.rate, 1e-3f * point.rate) << point.alg << ' ' << point.zh;
    }
}

TEST(Rainfall, RelationsWithoutTheirInputsWriteNothing) {
    const bool needs[5][3] = {{1, 0, 0}, {1, 1, 0}, {0, 1, 1}, {0, 0, 1}, {1, 1, 0}};
    float value = 1.0f;
    Cradarpro radar;
    for (int alg = 0; alg < 5; ++alg) {
        for (int given = 0; given < 8; ++given) {
            float* inputs[3];
            bool enough = true;
            for (int k = 0; k < 3; ++k) {
                inputs[k] = (given >> k & 1) != 0 ? &value : nullptr;
                enough = enough && (inputs[k] != nullptr || !needs[alg][k]);
            }
            float rain = -7.0f;
            radar.RainfallEstimation(inputs[0], inputs[1], inputs[2], 1, alg, nullptr, 0, &rain);
            EXPECT_EQ(rain != -7.0f, enough) << alg << ' ' << given;
        }
    }
    radar.RainfallEstimation(&value, &value, &value, 1, 0, nullptr, 0, nullptr);
}

TEST(Rainfall, NewCoefficientsStay) {
    Cradarpro radar;
    float zh = 30.0f, rain = 0.0f, coeffs[] = {100.0f, 2.0f};
    radar.RainfallEstimation(&zh, nullptr, nullptr, 1, 0, coeffs, 2, nullptr);
    EXPECT_EQ(radar.coefficients[0][0], 200.0) << "nothing without an output";
    for (const int rejected : {-1, 10, 11}) {
        radar.RainfallEstimation(&zh, nullptr, nullptr, 1, 0, coeffs, rejected, &rain);
        EXPECT_EQ(radar.coefficients[0][0], 200.0) << rejected;
    }
    radar.RainfallEstimation(nullptr, nullptr, nullptr, 1, 0, coeffs, 2, &rain);
    radar.RainfallEstimation(&zh, nullptr, nullptr, 1, 0, nullptr, 0, &rain);
    EXPECT_NEAR(rain, std::sqrt(10.0f), 1e-5f);
    radar.RainfallEstimation(&zh, nullptr, nullptr, 1, 19, coeffs, 2, &rain);
    EXPECT_EQ(radar.coefficients[19][1], 2.0);
    EXPECT_EQ(rain, 0.0f);
    radar.RainfallEstimation(&zh, nullptr, nullptr, 1, 20, coeffs, 2, &rain);
    radar.RainfallEstimation(&zh, nullptr, nullptr, 0, 0, nullptr, 0, &rain);
}

TEST(PowerLaw, BothWays) {
    Cradarpro radar;
    std::vector<float> zh = {-32.0f, -31.99f, 23.0f, kNan, 55.0f, -HUGE_VALF}, rain(6), back(6);
    radar.ZtoR(rain.data(), zh.data(), 6, 200.0f, 1.6f);
    EXPECT_EQ(rain[0], 0.0f);
    EXPECT_GT(rain[1], 0.0f);
    EXPECT_NEAR(rain[2], 0.9985f, 1e-4f);
    EXPECT_EQ(rain[3], 0.0f);
    EXPECT_EQ(rain[5], 0.0f);
    radar.RtoZ(rain.data(), back.data(), 6, 200.0f, 1.6f);
    EXPECT_EQ(back[0], -32.0f);
    EXPECT_NEAR(back[1], -31.99f, 1e-4f);
    EXPECT_NEAR(back[2], 23.0f, 1e-4f);
    EXPECT_NEAR(back[4], 55.0f, 1e-4f);
    float one[] = {1.0f, -1.0f, kNan};
    radar.RtoZ(one, one, 3, 200.0f, 1.6f);
    EXPECT_NEAR(one[0], 23.0103f, 1e-4f);
    EXPECT_EQ(one[1], -32.0f);
    EXPECT_EQ(one[2], -32.0f);
    radar.ZtoR(nullptr, zh.data(), 6, 200.0f, 1.6f);
    radar.RtoZ(rain.data(), nullptr, 6, 200.0f, 1.6f);
    radar.ZtoR(rain.data(), zh.data(), -1, 200.0f, 1.6f);
    radar.threshold = 30.0f;
    radar.ZtoR(rain.data(), zh.data(), 6, 200.0f, 1.6f);
    EXPECT_EQ(rain[2], 0.0f) << "the object's own threshold";
}

TEST(PowerLaw, SameBitsAsThePlainDefinition) {
    std::mt19937 random(63);
    std::normal_distribution<float> normal(20.0f, 25.0f);
    const float factors[] = {200.0f, 1.0f, 1e30f, 0.0f, -3.0f, HUGE_VALF},
                exponents[] = {1.6f, 0.1f, -2.0f};
    for (const float a : factors) {
        for (const float b : exponents) {
            std::vector<float> zh(3000), rain(zh.size()), back(zh.size()), rates, levels;
            for (float& dbz : zh) {
                dbz = random() % 50 == 0 ? HUGE_VALF : normal(random);
            }
            Cradarpro radar;
            const int n = static_cast<int>(zh.size());
            radar.ZtoR(rain.data(), zh.data(), n, a, b);
            radar.RtoZ(rain.data(), back.data(), n, a, b);
            for (std::size_t i = 0; i < zh.size(); ++i) {
                const double z = std::pow(10.0, 0.1 * static_cast<double>(zh[i]));
                const double rate =
                    std::pow(z / static_cast<double>(a), 1 / static_cast<double>(b));
                rates.push_back(zh[i] > -32.0f ? static_cast<float>(rate) : 0.0f);
                const double power = std::pow(static_cast<double>(rain[i]), static_cast<double>(b));
                const double level = 10 * std::log10(static_cast<double>(a) * power);
                levels.push_back(rain[i] > 0.0f ? static_cast<float>(level) : -32.0f);
            }
            EXPECT_TRUE(sameBits(rain, rates)) << a << ' ' << b;
            EXPECT_TRUE(sameBits(back, levels)) << a << ' ' << b;
        }
    }
}

TEST(Calibration, VerticalScan) {
    const int ngates = 4, nrays = 3;
    std::vector<float> f1, f2;
    for (int i = 0; i < ngates * nrays; ++i) {
        f1.push_back(i % 4 == 1 ? -5.0f : 6.0f);
        f2.push_back(static_cast<float>(i % 4));
    }
    float out[6];
    Cradarpro radar;
    const auto run = [&](int gates, int rays, int g0, int g1) {
        std::fill(out, out + 6, -7.0f);
        radar.CalibrationAt90deg(f1.data(), f2.data(), nullptr, f2.data(), f1.data(), f2.data(),
                                 gates, rays, g0, g1, out);
        return std::vector<float>(out, out + 6);
    };
    // Gates 1 and 2: of f1 only the second counts, the divisor counts both.
    EXPECT_EQ(run(ngates, nrays, 1, 2), (std::vector<float>{3.0f, 1.5f, 0.0f, 1.5f, 0.5f, 1.5f}));
    EXPECT_EQ(run(ngates, nrays, -2, 1),
              (std::vector<float>{1.5f, 0.25f, 0.0f, 0.25f, 0.25f, 0.25f}));
    EXPECT_EQ(run(ngates, nrays, 2, 9)[1], 5.0f / 8.0f);
    EXPECT_EQ(run(ngates, nrays, 1, 2000000000)[1], 18.0f / (2e9f * 3));
    const std::vector<float> none = {-99.0f, -7.0f, -7.0f, -7.0f, -7.0f, -7.0f};
    EXPECT_EQ(run(ngates, nrays, 0, 0), none);
    EXPECT_EQ(run(ngates, nrays, 2, 2), none);
    EXPECT_EQ(run(ngates, nrays, 2, 1), none);
    EXPECT_EQ(run(0, nrays, 1, 2), none);
    EXPECT_EQ(run(ngates, 0, 1, 2), none);
    radar.CalibrationAt90deg(f1.data(), f2.data(), nullptr, nullptr, nullptr, nullptr, 4, 3, 1, 2,
                             nullptr);
}

}  // namespace
