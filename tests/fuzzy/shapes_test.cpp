/* Membership functions: the built-in shapes and tables of points. */
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "clutterclassifier/Cmfs.h"
#include "clutterclassifier/Cvars.h"
#include "support/bits.h"
#include "support/literal/classification.h"
#include "support/membership_files.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::vector<float> probes() {
    std::vector<float> x = {kNan, kInfinity, -kInfinity, 0.0f, -0.0f, 1e30f, -1e30f, 1e-40f};
    for (float v = -5.0f; v < 30.0f; v += 0.25f) {
        x.push_back(v);
    }
    return x;
}

struct ShapeCase {
    const char* shape;
    float params[5];
};

TEST(Shapes, SameBitsAsTheFormulas) {
    const ShapeCase cases[] = {
        {"same", {}},
        {"complement", {}},
        {"ones", {}},
        {"gaussian", {1, 0, 0, 0, 0}},
        {"gaussian", {0, 2, 0, 0, 0}},
        {"gaussian2s", {2, 10, 5, 20, 0}},
        {"gaussian2s", {2, 20, 5, 10, 0}},
        {"trapezoidal", {0, 1, 2, 3, 0}},
        {"trapezoidal", {0, 2, 1, 3, 0}},
        {"trapezoidal", {2, 2, 2, 2, 0}},
        {"trapezoidal", {kNan, 1, 2, 3, 0}},
    };
    std::vector<float> x = probes();
    const int n = static_cast<int>(x.size());
    for (const ShapeCase& c : cases) {
        Cmfs mf;
        std::copy(std::begin(c.params), std::end(c.params), mf.params);
        std::vector<double> out(x.size(), 0.375), expected(x.size(), 0.375);
        literal::Function function{c.shape, {}, {}, {}};
        std::copy(std::begin(c.params), std::end(c.params), function.params);
        literal::degreesOf(function, x.data(), expected.data(), n);
        const std::string shape = c.shape;
        if (shape == "same") {
            mf.same(x.data(), out.data(), n);
        }
        if (shape == "complement") {
            mf.complement(x.data(), out.data(), n);
        }
        if (shape == "ones") {
            mf.ones(nullptr, out.data(), n);
        }
        if (shape == "gaussian") {
            mf.gaussian(x.data(), out.data(), n);
        }
        if (shape == "gaussian2s") {
            mf.gaussian2s(x.data(), out.data(), n);
        }
        if (shape == "trapezoidal") {
            mf.trapezoidal(x.data(), out.data(), n);
        }
        EXPECT_TRUE(clutter::test::sameBits(out, expected)) << shape;
    }
}

TEST(Shapes, KnownDegrees) {
    Cmfs mf;
    const float gaussian2s[5] = {2, 10, 5, 20, 0};
    std::copy_n(gaussian2s, 5, mf.params);
    float x[] = {8, 10, 20, 22, kNan};
    double out[5];
    mf.gaussian2s(x, out, 5);
    EXPECT_DOUBLE_EQ(out[0], std::exp(-0.5));
    EXPECT_EQ(out[1], 1.0);
    EXPECT_EQ(out[2], 1.0);
    EXPECT_DOUBLE_EQ(out[3], std::exp(-18.0)) << "the right flank falls off from the left shoulder";
    EXPECT_EQ(out[4], 1.0);

    const float trapezoid[5] = {0, 1, 2, 3, 0};
    std::copy_n(trapezoid, 5, mf.params);
    float y[] = {0.5f, 0.0f, 3.0f, 1.5f, kNan};
    std::fill(std::begin(out), std::end(out), 7.0);
    mf.trapezoidal(y, out, 5);
    EXPECT_NEAR(out[0], 0.5, 1e-6);
    EXPECT_EQ(out[1], 1.000000013351432e-10);
    EXPECT_EQ(out[2], 1.000000013351432e-10);
    EXPECT_EQ(out[3], 7.0) << "the plateau is not written";
    EXPECT_EQ(out[4], 7.0) << "nor is NaN";

    // Beside the ends, where the flanks are hardly more than the floor that both of them end in.
    const float triangle[5] = {-1, 0, 0, 1, 0};
    std::copy_n(triangle, 5, mf.params);
    float z[] = {-1.0f + 0x1p-24f, 1.0f - 0x1p-24f};
    mf.trapezoidal(z, out, 2);
    EXPECT_DOUBLE_EQ(out[0], static_cast<double>(0x1p-24f + 1e-10f));
    EXPECT_EQ(out[1], out[0]);
}

TEST(Interpolation, SameBitsAsTheWalkForOrderedAndOtherTables) {
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        const literal::Function table = clutter::test::roughTable(random, 20.0, round % 4 != 0);
        std::vector<float> x = probes();
        for (const double point : table.px) {  // at, just below and just above every point
            const float at = static_cast<float>(point);
            x.insert(x.end(), {at, std::nextafter(at, kInfinity), std::nextafter(at, -kInfinity)});
        }
        std::vector<double> px = table.px, py = table.py, out(x.size()), expected;
        for (const float value : x) {
            expected.push_back(literal::interpolate(px, py, value));
        }
        Cmfs mf;
        mf.interp(px.data(), py.data(), static_cast<int>(px.size()), x.data(), out.data(),
                  static_cast<int>(x.size()));
        ASSERT_TRUE(clutter::test::sameBits(out, expected)) << "round " << round;
    }
}

TEST(Interpolation, LongTablesWithNanPointsAndNoPoints) {
    Cmfs mf;
    std::vector<double> px, py;
    for (int i = 0; i < 500; ++i) {
        px.push_back(0.1 * i);
        py.push_back(std::sin(i));
    }
    std::vector<float> x = probes();
    std::vector<double> out(x.size()), expected;
    for (const float value : x) {
        expected.push_back(literal::interpolate(px, py, value));
    }
    mf.interp(px.data(), py.data(), 500, x.data(), out.data(), static_cast<int>(x.size()));
    EXPECT_TRUE(clutter::test::sameBits(out, expected));

    px[100] = std::numeric_limits<double>::quiet_NaN();
    expected.clear();
    for (const float value : x) {
        expected.push_back(literal::interpolate(px, py, value));
    }
    mf.interp(px.data(), py.data(), 500, x.data(), out.data(), static_cast<int>(x.size()));
    EXPECT_TRUE(clutter::test::sameBits(out, expected));

    std::vector<double> untouched(x.size(), 4.0);
    mf.interp(px.data(), py.data(), 0, x.data(), untouched.data(), static_cast<int>(x.size()));
    EXPECT_EQ(untouched, std::vector<double>(x.size(), 4.0));
}

TEST(Shapes, WithoutInputOrOutputNothingIsDone) {
    for (const auto shape :
         {&Cmfs::same, &Cmfs::complement, &Cmfs::gaussian, &Cmfs::gaussian2s, &Cmfs::trapezoidal}) {
        Cmfs mf;
        float x[] = {1.0f, 2.0f};
        double out[] = {4.0, 4.0};
        (mf.*shape)(nullptr, out, 2);
        (mf.*shape)(x, nullptr, 2);
        EXPECT_TRUE(out[0] == 4.0 && out[1] == 4.0 && x[0] == 1.0f);
    }
}

TEST(Variable, FunctionsAreCreatedOnce) {
    Cvars variable;
    EXPECT_STREQ(variable.name, " ");
    variable.CreateMFSspace(0);
    EXPECT_EQ(variable.mfs, nullptr);
    variable.CreateMFSspace(3);
    variable.CreateMFSspace(5);
    ASSERT_EQ(variable.nmfs, 3);
    EXPECT_STREQ(variable.mfs[2].name, " ");
    EXPECT_STREQ(variable.mfs[2].type, " ");
    EXPECT_EQ(variable.mfs[2].params[4], 0.0f);
}

}  // namespace
