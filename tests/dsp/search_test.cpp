/* The toolkit's searches, scores, shifts, interpolation and noise, value by value. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <random>
#include <type_traits>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "dsp/search/random_fill.h"
#include "support/bits.h"

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using Floats = std::vector<float>;
using Doubles = std::vector<double>;

/* Ranges of an array of five, and whether the strict searches and the lax one accept them. */
struct Range {
    int n, from, to;
    bool strict, lax;
};
constexpr Range kRanges[] = {
    {5, 0, 5, true, true},   {5, 1, 4, true, true},   {5, 2, 2, false, true},
    {5, 2, 6, false, true},  {5, 3, 2, false, false}, {5, -1, 3, false, false},
    {5, 5, 5, false, false}, {0, 0, 0, false, false}, {-1, 0, 1, false, false},
};

TEST(Extremes, OnlyWithinAcceptedRanges) {
    CDSP dsp;
    Doubles wide = {4, 1, 7, 1, 7};
    Floats narrow(wide.begin(), wide.end());
    for (const Range& range : kRanges) {
        SCOPED_TRACE(testing::Message() << range.n << ": " << range.from << " .. " << range.to);
        const auto expect = [&](auto& x, auto search, bool accepted, double extreme, int at) {
            std::remove_reference_t<decltype(x[0])> value = -9;
            int index = -9;
            search(x.data(), range.n, range.from, range.to, value, index);
            EXPECT_EQ(index, accepted ? at : -9);
            EXPECT_EQ(value, accepted ? extreme : -9.0);
        };
        const auto max = [&](auto&&... a) { dsp.GetMax(a...); };
        const auto min = [&](auto&&... a) { dsp.GetMin(a...); };
        expect(wide, max, range.strict, 7.0, 2);
        expect(wide, min, range.strict, 1.0, 1);
        expect(narrow, min, range.strict, 1.0, 1);
        expect(narrow, max, range.lax, 7.0, 2);
    }
}

TEST(Extremes, RejectedRangeTakesTheFirstElementUnsearched) {
    Floats x = {1, 2, 3};
    float max = -9.0f;
    int index = -9;
    CDSP().GetMax(x.data(), 3, 0, 4, max, index);
    EXPECT_EQ(index, 0);
    CDSP().GetMax(static_cast<float*>(nullptr), 3, 0, 3, max, index);
    EXPECT_EQ(max, 1.0f);
}

TEST(Extremes, NanIsFoundOnlyWhereTheSearchStarts) {
    CDSP dsp;
    Floats x = {2, kNan, 3};
    float value = 0.0f;
    int index = -1;
    dsp.GetMax(x.data(), 3, 0, 3, value, index);
    EXPECT_EQ(index, 2);
    dsp.GetMax(x.data(), 3, 1, 3, value, index);
    EXPECT_EQ(index, 1);
    EXPECT_TRUE(std::isnan(value));
}

TEST(Extremes, OfAMatrixColumnByColumn) {
    Floats m = {5, 9, 1,  //
                9, 1, 5};
    int rowMax = -1, colMax = -1, rowMin = -1, colMin = -1;
    CDSP().findmaxmin(m.data(), 2, 3, rowMax, colMax, rowMin, colMin);
    EXPECT_EQ(std::vector<int>({rowMax, colMax, rowMin, colMin}), std::vector<int>({1, 0, 1, 1}));
    CDSP().findmaxmin(m.data(), 0, 3, rowMax, colMax, rowMin, colMin);
    EXPECT_EQ(std::vector<int>({rowMax, colMax, rowMin, colMin}), std::vector<int>({0, 0, 0, 0}));
}

TEST(GetNearest, FirstOfTheSmallestDistances) {
    CDSP dsp;
    Doubles wide = {1, 3, 7, 3};
    double value = -1.0;
    int index = -1;
    dsp.GetNearest(wide.data(), 4, 2.0, value, index);
    EXPECT_EQ(index, 0) << "1 and 3 are equally near";
    dsp.GetNearest(wide.data(), 4, 100.0, value, index);
    EXPECT_EQ(value, 7.0);
    Floats narrow = {16777218.0f, -16777215.0f};  // equally near in single precision
    float found = 0.0f;
    dsp.GetNearest(narrow.data(), 2, 1.25f, found, index);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(found, -16777215.0f);
    dsp.GetNearest(narrow.data(), 0, 0.0f, found, index);
    EXPECT_EQ(index, 1) << "no elements, no answer";
}

TEST(GetNearest, UnsignedDifferencesWrap) {
    CDSP dsp;
    std::vector<unsigned int> x = {10, 30, 20, 5};
    const unsigned int table[][2] = {{11, 20}, {20, 20}, {0, 5}, {31, 5}, {4294967295u, 5}};
    for (const auto& [target, expected] : table) {
        unsigned int value = 0;
        int index = -1;
        dsp.GetNearest(x.data(), 4, target, value, index);
        EXPECT_EQ(value, expected) << target;
        EXPECT_EQ(x[static_cast<std::size_t>(index)], expected);
    }
}

TEST(Products, InTheArraysPrecision) {
    CDSP dsp;
    Floats a = {1e4f, 1, -1e4f}, b = {1e4f, 1, 1e4f};
    Doubles wideA(a.begin(), a.end()), wideB(b.begin(), b.end());
    EXPECT_EQ(dsp.xcorr(a.data(), b.data(), 3), 0.0f);
    EXPECT_EQ(dsp.mult(wideA.data(), wideB.data(), 3), 1.0);
    EXPECT_EQ(dsp.mult(wideA.data(), wideB.data(), 0), 0.0);
}

TEST(Corr, OfLinesAndConstants) {
    CDSP dsp;
    Floats x = {1, 2, 3, 6}, falling = {-2, -4, -6, -12}, same(4, 3.0f), other = {1, 0, 0, 1};
    EXPECT_FLOAT_EQ(dsp.corr(x.data(), x.data(), 4), 1.0f);
    EXPECT_FLOAT_EQ(dsp.corr(x.data(), falling.data(), 4), -1.0f);
    EXPECT_FLOAT_EQ(dsp.corr(x.data(), other.data(), 4), 0.25f / (std::sqrt(3.5f) * 0.5f));
    EXPECT_TRUE(std::isnan(dsp.corr(x.data(), same.data(), 4)));
    EXPECT_TRUE(std::isnan(dsp.corr(x.data(), x.data(), 0)));
}

struct Sums {
    int n;
    double sx = -1, sy = -1, sxx = -1, syy = -1, sxy = -1;
};

double correlate(Floats x, Floats y, double threshold, int linear, Sums& sums) {
    return CDSP().correlation(x.data(), y.data(), sums.n, sums.sx, sums.sy, sums.sxx, sums.syy,
                              sums.sxy, threshold, linear);
}

TEST(Correlation, SumsOfThePairsAboveTheThreshold) {
    Sums sums{5};
    EXPECT_NEAR(correlate({1, 2, 3, -50, kNan}, {2, 4, 6, 9, 9}, 1.0, 1, sums), 1.0, 1e-12);
    EXPECT_EQ(sums.n, 3);
    EXPECT_EQ((Doubles{sums.sx, sums.sy, sums.sxx, sums.syy, sums.sxy}),
              (Doubles{6, 12, 14, 56, 28}));
    sums = {3};
    EXPECT_EQ(correlate({1, 2, 3}, {2, 4, 6}, 3.5, 1, sums), 0.0) << "none took part";
    EXPECT_EQ(sums.n, 0);
}

TEST(Correlation, OfLogarithmsWithAFloor) {
    // The threshold looks at x itself; what is not positive becomes log10(1e-5).
    Sums sums{4};
    correlate({0.01f, -1, 10, 1000}, {100, 10, 0, kNan}, -1.0, 0, sums);
    EXPECT_EQ(sums.n, 4);
    EXPECT_NEAR(sums.sx, -2 - 5 + 1 + 3, 1e-6);
    EXPECT_NEAR(sums.sy, 2 + 1 - 5 - 5, 1e-6);
    sums = {4};
    correlate({0.01f, -1, 10, 1000}, {100, 10, 0, kNan}, 0.005, 0, sums);
    EXPECT_EQ(sums.n, 3);
}

TEST(Correlation, LeavesItsArraysAndRejectsNone) {
    CDSP dsp;
    Floats x = {1, 10}, y = {-1, 5};
    Sums s{2};
    dsp.correlation(x.data(), y.data(), s.n, s.sx, s.sy, s.sxx, s.syy, s.sxy, 0.0, 0);
    EXPECT_EQ(x, (Floats{1, 10}));
    EXPECT_EQ(y, (Floats{-1, 5}));
    for (const int n : {2, 0, -4}) {
        Sums none{n};
        EXPECT_EQ(dsp.correlation(n > 0 ? nullptr : x.data(), y.data(), none.n, none.sx, none.sy,
                                  none.sxx, none.syy, none.sxy, 0.0, 1),
                  -999.0);
        EXPECT_EQ(none.n, 0);
        EXPECT_EQ(none.sx + none.sy + none.sxx + none.syy + none.sxy, 0.0);
    }
}

struct Events {
    int n, both = -1, secondOnly = -1, firstOnly = -1, neither = -1;
    double scoreA = 9, scoreB = 9;

    Events(Floats first, Floats second, int count) : n(count) {
        CDSP().farpod(first.empty() ? nullptr : first.data(), second.data(), n, 10.0f, both,
                      secondOnly, firstOnly, neither, scoreA, scoreB);
    }
    std::vector<int> counts() const { return {n, both, secondOnly, firstOnly, neither}; }
};

TEST(Farpod, CountsAndScores) {
    const Events mixed({10, 20, 1, 30, kNan, 2, 40}, {10, 3, 50, 9, 11, kNan, 99}, 7);
    EXPECT_EQ(mixed.counts(), (std::vector<int>{7, 2, 2, 2, 1}));
    EXPECT_EQ(mixed.scoreA, 0.5);
    EXPECT_EQ(mixed.scoreB, 0.5);
    const Events misses({1, 1, 10}, {10, 10, 10}, 3);
    EXPECT_EQ(misses.scoreA, 1.0);
    EXPECT_EQ(misses.scoreB, 1.0);
    const Events quiet({1, 1}, {2, 2}, 2);
    EXPECT_EQ(quiet.counts(), (std::vector<int>{2, 0, 0, 0, 2}));
    EXPECT_EQ(quiet.scoreA, -1.0);
    EXPECT_EQ(quiet.scoreB, -1.0);
    for (const int n : {3, 0, -2}) {
        const Events none(n > 0 ? Floats{} : Floats{1}, {1}, n);
        EXPECT_EQ(none.counts(), (std::vector<int>{0, 0, 0, 0, 0}));
        EXPECT_EQ(none.scoreA, -1.0);
    }
}

Floats shiftedBy(const Floats& in, int nrows, int ncols, int rows, int columns) {
    Floats out(in.size(), 0.0f);
    for (int r = std::max(rows, 0); r < std::min(nrows, nrows + rows); ++r) {
        for (int c = std::max(columns, 0); c < std::min(ncols, ncols + columns); ++c) {
            const int from = (r - rows) * ncols + c - columns;
            out[static_cast<std::size_t>(r * ncols + c)] = in[static_cast<std::size_t>(from)];
        }
    }
    return out;
}

TEST(ShiftMtx, AnyShiftAlsoInPlace) {
    constexpr int kRows = 4, kColumns = 5;
    CDSP dsp;
    Floats in(kRows * kColumns);
    for (std::size_t i = 0; i < in.size(); ++i) {
        in[i] = static_cast<float>(i + 1);
    }
    for (int rows = -6; rows <= kRows + 1; ++rows) {
        for (int columns = -7; columns <= kColumns + 1; ++columns) {
            const bool refused = rows > kRows || columns > kColumns;
            const Floats shifted = shiftedBy(in, kRows, kColumns, rows, columns);
            Floats out(in.size(), -1.0f), inPlace = in;
            dsp.ShiftMtx(in.data(), out.data(), kColumns, kRows, rows, columns);
            dsp.ShiftMtx(inPlace.data(), inPlace.data(), kColumns, kRows, rows, columns);
            EXPECT_EQ(out, refused ? Floats(in.size(), -1.0f) : shifted) << rows << ", " << columns;
            EXPECT_EQ(inPlace, refused ? in : shifted) << rows << ", " << columns;
        }
    }
    constexpr int kLeast = std::numeric_limits<int>::min();
    dsp.ShiftMtx(in.data(), in.data(), kColumns, kRows, kLeast, kLeast);
    EXPECT_EQ(in, Floats(in.size(), 0.0f));
}

TEST(MatrixPrediction, FollowsAMovingCell) {
    constexpr int kSize = 9;
    struct Case {
        int window, step, rows, columns;  // the best shift back; 99: no search
    };
    // With steps of 2, two shifts are equally good: the first wins.
    const Case cases[] = {{5, 1, -1, 2},  {6, 1, -1, 2},  {7, 2, -1, 3}, {17, 1, -1, 2},
                          {5, 0, 99, 99}, {0, 1, 99, 99}, {1, 1, 0, 0},  {46341, 1, 99, 99}};
    CDSP dsp;
    Floats previous(kSize * kSize, 0.0f);
    for (const int i : {30, 31, 39, 40}) {
        previous[static_cast<std::size_t>(i)] = 5.0f;
    }
    for (const Case& c : cases) {
        Floats now = shiftedBy(previous, kSize, kSize, 1, -2), predicted(now.size(), -1.0f);
        int rows = 99, columns = 99;
        dsp.MatrixPrediction(now.data(), previous.data(), predicted.data(), kSize, kSize, c.window,
                             rows, columns, c.step);
        EXPECT_EQ(rows, c.rows) << c.window << ", " << c.step;
        EXPECT_EQ(columns, c.columns) << c.window << ", " << c.step;
        EXPECT_EQ(predicted, rows == 99 ? Floats(now.size(), -1.0f)
                                        : shiftedBy(previous, kSize, kSize, rows, columns));
    }
}

TEST(Interp, BetweenKnotsAndBeyond) {
    CDSP dsp;
    Doubles x = {0, 1, 3, 4}, y = {10, 20, 60, 5};
    Doubles xi = {-1, 0, 0.5, 1, 2, 3, 3.5, 4, 9, static_cast<double>(kNan)};
    dsp.interp(x.data(), y.data(), 4, xi.data(), xi.data(), 10);
    EXPECT_EQ(xi, (Doubles{10, 10, 15, 20, 40, 5, 5, 5, 5, 5}))
        << "the last value already holds between the last two knots";
    Doubles one = {0.5, -0.5};
    dsp.interp(x.data(), y.data(), 1, one.data(), one.data(), 2);
    EXPECT_EQ(one, (Doubles{10, 10}));
    dsp.interp(x.data(), y.data(), 0, one.data(), one.data(), 2);
    EXPECT_EQ(one, (Doubles{10, 10}));
    Doubles unordered = {5, 1, 8, 9}, at = {3};  // the first knot above, whatever the order
    dsp.interp(unordered.data(), y.data(), 4, at.data(), at.data(), 1);
    EXPECT_EQ(at[0], 10.0);
}

/* The published numbers of the generator for this seed, their upper 31 bits. */
TEST(SeededDraws, AreThoseOfSplitMix64) {
    clutter::dsp::seedThread(1234567);
    for (const std::uint64_t number :
         {6457827717110365317u, 3203168211198807973u, 9817491932198370423u, 4593380528125082431u}) {
        EXPECT_EQ(clutter::dsp::drawNumber(), static_cast<int>(number >> 33));
    }
    clutter::dsp::seedThread(std::nullopt);
}

/*
 * Fills are compared with the generator's own sequence; the clock may tick between the two, so an
 * attempt counts only when it has not.
 */
template <class Fill, class Expect>
void compareWithGenerator(Fill fill, Expect expect) {
    for (int attempt = 0; attempt < 5; ++attempt) {
        std::srand(77);
        const std::time_t before = std::time(nullptr);
        fill();
        if (std::time(nullptr) != before) {
            continue;
        }
        std::srand(77);
        std::srand(static_cast<unsigned>(std::rand()) + static_cast<unsigned>(before));
        expect();
        return;
    }
    FAIL() << "no second was long enough";
}

double normal(double mean, double sd) {
    const double radius = std::sqrt(-2 * std::log((std::rand() + 1.0) / 2147483647.0));
    return radius * sd * std::sin(std::rand() * 6.283185307179586 / 2147483647.0) + mean;
}

template <class T>
T uniform(T min, T max) {
    const T product = static_cast<T>(std::rand()) * (max - min);
    return static_cast<T>(static_cast<double>(product) / 2147483647.0 + static_cast<double>(min));
}

template <class T>
void expectSequences() {
    CDSP dsp;
    std::vector<T> x(50);
    const auto expect = [&x](auto next) {
        return [&x, next] {
            for (const T value : x) {
                ASSERT_EQ(value, static_cast<T>(next()));
            }
        };
    };
    const T min = static_cast<T>(-3.1), max = 5;
    compareWithGenerator([&] { dsp.GenerateRandomNoise(x.data(), 50, min, max); },
                         expect([=] { return uniform(min, max); }));
    compareWithGenerator([&] { dsp.GenerateNormallyDistributed(x.data(), 50, T{2}, T{3}); },
                         expect([] { return normal(2.0, 3.0); }));
}

TEST(RandomFills, FollowTheGeneratorsSequence) {
    expectSequences<double>();
    expectSequences<float>();
    Floats x;
    compareWithGenerator(
        [&] {
            x.assign(50, 100.0f);
            CDSP().AddNoiseNormallyDistributed(x.data(), 50, 0.0f, 3.0f);
        },
        [&] {
            for (const float value : x) {
                ASSERT_EQ(value, static_cast<float>(100.0 + normal(0.0, 3.0)));
            }
        });
}

TEST(RandomFills, MomentsOfTheNormalDistribution) {
    Floats x(100000);
    float mean = 0.0f, deviation = 0.0f;
    CDSP dsp;
    dsp.GenerateNormallyDistributed(x.data(), 100000, 5.0f, 2.0f);
    dsp.GetMeanStd(x.data(), 100000, mean, deviation);
    EXPECT_NEAR(mean, 5.0f, 0.06f);  // nine standard errors: the seed differs every time
    EXPECT_NEAR(deviation, 2.0f, 0.04f);
}

TEST(RandomFills, NothingToFillStillReseeds) {
    CDSP dsp;
    float untouched = 4.0f;
    compareWithGenerator([&] { dsp.GenerateRandomNoise(&untouched, 0, 0.0f, 1.0f); },
                         [&] {
                             const int next = std::rand();
                             std::srand(77);
                             dsp.AddNoiseNormallyDistributed(&untouched, -1, 0.0f, 1.0f);
                             EXPECT_EQ(std::rand(), next);
                         });
    EXPECT_EQ(untouched, 4.0f);
}

}  // namespace
