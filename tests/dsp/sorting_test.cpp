/* The fast sort gives the order of the sort by exchange, ties and NaN included. */
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/bits.h"
#include "support/literal/toolkit.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/* Compares values (bit by bit) and permutation with the exchange. */
void expectExchangeOrder(std::vector<float> in) {
    CDSP dsp;
    const int n = static_cast<int>(in.size());
    std::vector<float> out(in.size(), -77.0f), expected(in.size());
    std::vector<int> index(in.size(), -1), expectedIndex(in.size());
    literal::exchangeSort(in.data(), expected.data(), expectedIndex.data(), n);
    dsp.Sort(in.data(), out.data(), index.data(), n);
    ASSERT_EQ(index, expectedIndex) << testing::PrintToString(in);
    ASSERT_TRUE(clutter::test::sameBits(out, expected)) << testing::PrintToString(in);
}

TEST(Sort, EveryShortArrangementOfTiesAndNan) {
    const float alphabet[] = {0.0f, -0.0f, 1.0f, 2.0f, kNan};
    for (std::size_t n = 1; n <= 6; ++n) {
        std::vector<std::size_t> digits(n, 0);
        for (std::size_t at = 0; at < n;) {
            std::vector<float> in;
            for (const std::size_t digit : digits) {
                in.push_back(alphabet[digit]);
            }
            ASSERT_NO_FATAL_FAILURE(expectExchangeOrder(in));
            for (at = 0; at < n && ++digits[at] == std::size(alphabet); ++at) {
                digits[at] = 0;
            }
        }
    }
}

TEST(Sort, LongArraysFromDistinctValuesToFewLevels) {
    std::mt19937 random(31);
    const float odd[] = {kNan, kInfinity, -kInfinity, 0.0f, -0.0f, 1e-45f, -1e-45f, -3.4e38f};
    for (int round = 0; round < 300; ++round) {
        const unsigned levels = round % 3 == 0 ? 4000000000u : 1 + random() % 60;
        std::vector<float> in(1 + random() % 700);
        for (float& value : in) {
            value = static_cast<float>(random() % levels) - 20.0f;
            if (round % 2 == 0 && random() % 20 == 0) {
                value = odd[random() % std::size(odd)];
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectExchangeOrder(in));
    }
}

TEST(Sort, ScanSizedArrayInPlace) {
    constexpr int kCount = 360000;
    std::vector<float> values(kCount);
    std::iota(values.begin(), values.end(), -1000.0f);
    std::shuffle(values.begin(), values.end(), std::mt19937(32));
    const std::vector<float> in = values;
    std::vector<int> index(kCount);
    CDSP().Sort(values.data(), values.data(), index.data(), kCount);
    for (int i = 0; i < kCount; ++i) {
        const auto at = static_cast<std::size_t>(i);
        ASSERT_EQ(values[at], static_cast<float>(i - 1000));
        ASSERT_EQ(in[static_cast<std::size_t>(index[at])], values[at]);
    }
}

TEST(Sort, NothingToSort) {
    float value = 3.0f;
    int index = -1;
    CDSP().Sort(&value, &value, &index, 0);
    CDSP().Sort(&value, &value, &index, -5);
    CDSP().Sort(nullptr, &value, &index, 1);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(value, 3.0f);
}

}  // namespace
