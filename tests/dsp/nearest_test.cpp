/* The ordered search for the nearest value against a search through all of them. */
#include "dsp/search/nearest.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "support/literal/geometry.h"

namespace {

using clutter::dsp::NearestValue;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/* Every element, its neighbours, the middles between elements, and what is far away. */
std::vector<float> targetsFor(const std::vector<float>& x, std::mt19937& random) {
    std::vector<float> targets = {0.0f, -0.0f, 1e30f, -1e30f, 3e38f, kNan, kInfinity, -kInfinity};
    for (std::size_t i = 0; i < x.size(); ++i) {
        const float other = x[random() % x.size()];
        targets.insert(targets.end(),
                       {x[i], std::nextafter(x[i], kInfinity), std::nextafter(x[i], -kInfinity),
                        0.5f * (x[i] + other), x[i] + 1e8f});
    }
    return targets;
}

void expectSame(const std::vector<float>& x, std::mt19937& random) {
    const int n = static_cast<int>(x.size());
    const NearestValue nearest(x.data(), n);
    for (const float target : targetsFor(x, random)) {
        ASSERT_EQ(nearest.indexOf(target), literal::nearest(x.data(), n, target))
            << "target " << target << " among " << n;
    }
}

TEST(NearestValue, IsTheOneThatALiteralSearchFinds) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(-10.0f, 10.0f);
    for (int trial = 0; trial < 600; ++trial) {
        std::vector<float> x(1 + random() % 50);
        for (float& value : x) {
            const auto bits = static_cast<std::uint32_t>(random());
            switch (trial % 6) {
                case 0:
                    value = uniform(random);
                    break;
                case 1:  // many equals, many ties
                    value = std::round(uniform(random));
                    break;
                case 2:  // anything: NaN, infinities, all magnitudes
                    value = std::bit_cast<float>(bits);
                    break;
                case 3:  // tiny beside the target: differences round to one number
                    value = 1e-20f * uniform(random);
                    break;
                case 4:  // one far away, the others in one bucket
                    value = &value == &x[0] ? 1e9f : uniform(random);
                    break;
                default:
                    value = random() % 3 ? uniform(random) : (random() % 2 ? kNan : -kInfinity);
            }
        }
        expectSame(x, random);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(NearestValue, NothingToSearchGivesElementZero) {
    EXPECT_EQ(NearestValue(nullptr, 0).indexOf(1.0f), 0);
    const float nothing[] = {kInfinity, kNan, -kInfinity};
    EXPECT_EQ(NearestValue(nothing, 3).indexOf(1.0f), 0);
    const float first[] = {kNan, 1.0f};
    EXPECT_EQ(NearestValue(first, 2).indexOf(1.0f), 0);
}

}  // namespace
