/* The other operations of the algorithms class: hydrometeors, conversions, isolated pixels. */
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/literal/classification.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(Hydrometeors, EveryInputEndsInNotFound) {
    Cradarpro radar;
    std::vector<float> x(3, 1.0f), out(3, 99.0f);
    struct Row {
        int input;
        const char* message;
    };
    const Row rows[] = {{0, "Membership function not found: Zh[4]!\n"},
                        {3, "Membership function not found: LDR[4]!\n"},
                        {4, "Membership function not found:  !\n"},
                        {5, "Membership function not found:  !\n"}};
    for (const Row& row : rows) {
        float* in[6] = {};
        in[row.input] = x.data();
        testing::internal::CaptureStdout();
        radar.HydrometeorClassification(nullptr, in[0], in[1], in[2], in[3], in[4], in[5],
                                        out.data(), 3);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), row.message) << row.input;
        EXPECT_EQ(out, std::vector<float>(3, 99.0f));
    }
    radar.HydrometeorClassification(nullptr, x.data(), nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, 3);
    radar.HydrometeorClassification(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    out.data(), 3);
    EXPECT_EQ(out, std::vector<float>(3, -1.0f));
}

TEST(Conversions, DecibelsAndBack) {
    Cradarpro radar;
    float values[] = {100.0f, 1.0f, 0.0f, -1.0f};
    radar.ZmmtoZdb(values, values, 4);
    EXPECT_EQ(values[0], 20.0f);
    EXPECT_EQ(values[2], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(values[3] != values[3]);
    radar.ZdBtoZmm(values, values, 2);
    EXPECT_EQ(values[0], 100.0f);
    radar.ZdBtoZmm(nullptr, values, 2);
    radar.ZmmtoZdb(values, values, -1);
    EXPECT_EQ(values[1], 1.0f);
}

TEST(IsolatedPixels, SameFlagsAsCountingEveryWindow) {
    std::mt19937 random(8);
    Cradarpro radar;
    for (int round = 0; round < 200; ++round) {
        const int ngates = 1 + static_cast<int>(random() % 30),
                  nrays = 1 + static_cast<int>(random() % 12);
        const int wgates = 2 + static_cast<int>(random() % 14),
                  wrays = 2 + static_cast<int>(random() % 30);
        const int most = static_cast<int>(random() % 6);
        std::vector<float> cls;
        for (int i = 0; i < ngates * nrays; ++i) {
            cls.push_back(random() % 8 == 0 ? 0.0f : random() % 9 == 0 ? kNan : 5.0f);
        }
        std::vector<float> flags(cls.size(), 7.0f), expected(cls.size());
        radar.GetIsolatedPixels(cls.data(), flags.data(), ngates, nrays, wgates, wrays, most);
        literal::isolatedPixels(cls.data(), expected.data(), ngates, nrays, wgates, wrays, most);
        ASSERT_EQ(flags, expected) << ngates << " x " << nrays << ", " << wgates << " x " << wrays;
        radar.GetIsolatedPixels(cls.data(), cls.data(), ngates, nrays, wgates, wrays, most);
        ASSERT_EQ(cls, expected) << "in place";
    }
}

TEST(IsolatedPixels, SmallWindowsAndNullArraysDoNothing) {
    Cradarpro radar;
    std::vector<float> cls(9, 5.0f), flags(9, 7.0f);
    cls[4] = 0.0f;
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 1, 3, 1);
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 0, 3, 3, 1);
    radar.GetIsolatedPixels(nullptr, flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags, std::vector<float>(9, 7.0f));
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags[4], 1.0f);
    cls[5] = 0.0f;
    radar.GetIsolatedPixels(cls.data(), flags.data(), 3, 3, 3, 3, 1);
    EXPECT_EQ(flags[4], 0.0f) << "two neighbours are not isolated";
}

}  // namespace
