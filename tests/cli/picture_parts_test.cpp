/* The parts of a picture, each alone: colours, ticks, the gate at a point, images. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

#include "picture/geometry.h"
#include "picture/palette.h"
#include "picture/picture.h"
#include "picture/quantity.h"
#include "picture/raster.h"
#include "picture_sweep.h"

namespace cli {

using namespace scan;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kDegree = std::numbers::pi / 180.0;

/* CIE lightness, 0..100. */
double lightness(Rgb colour) {
    const auto linear = [](double byte) {
        const double v = byte / 255.0;
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    const double y =
        0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
    return 116.0 * std::cbrt(std::max(y, 0.008856)) - 16.0;
}

TEST(Palette, LightnessFallsAllTheWay) {
    for (const Palette palette : {Palette::kReflectivity, Palette::kSequential}) {
        for (int i = 1; i <= 64; ++i) {
            EXPECT_LE(lightness(colourAt(palette, i / 64.0)),
                      lightness(colourAt(palette, (i - 1) / 64.0)) + 0.4)
                << "at " << i << " of 64";
        }
        EXPECT_GT(lightness(colourAt(palette, 0.0)) - lightness(colourAt(palette, 1.0)), 70.0);
    }
    for (int i = 1; i <= 32; ++i) {
        for (const double side : {-0.5, 0.5}) {
            EXPECT_LT(lightness(colourAt(Palette::kDiverging, 0.5 + side * i / 32.0)),
                      lightness(colourAt(Palette::kDiverging, 0.5 + side * (i - 1) / 32.0)));
        }
        EXPECT_NEAR(lightness(colourAt(Palette::kDiverging, 0.5 + i / 64.0)),
                    lightness(colourAt(Palette::kDiverging, 0.5 - i / 64.0)), 6.0);
    }
}

TEST(Palette, PositionsBeyondTheEndsTakeTheEnds) {
    for (const Palette palette :
         {Palette::kReflectivity, Palette::kSequential, Palette::kDiverging}) {
        for (const double beyond : {-1e300, -0.001, static_cast<double>(kNan)}) {
            EXPECT_EQ(colourAt(palette, beyond), colourAt(palette, 0.0));
        }
        EXPECT_EQ(colourAt(palette, 1e300), colourAt(palette, 1.0));
    }
}

TEST(Ticks, AreRoundAndWithinTheScale) {
    const struct {
        double low, high, count;
        std::vector<double> ticks;
        std::vector<std::string> texts;
    } cases[] = {
        {-10,
         70,
         8,
         {-10, 0, 10, 20, 30, 40, 50, 60, 70},
         {"-10", "0", "10", "20", "30", "40", "50", "60", "70"}},
        {-16, 16, 7, {-15, -10, -5, 0, 5, 10, 15}, {"-15", "-10", "-5", "0", "5", "10", "15"}},
        {0, 1, 5, {0, 0.2, 0.4, 0.6, 0.8, 1}, {"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}},
        {0.1, 0.9, 2, {0.5}, {"0.5"}},
        {0, 2.5, 2.1, {0, 2}, {"0", "2"}},
        {-180, 180, 4, {-100, 0, 100}, {"-100", "0", "100"}},
        {0, 0.0003, 3, {0, 0.0001, 0.0002, 0.0003}, {"0.0000", "0.0001", "0.0002", "0.0003"}},
    };
    for (const auto& row : cases) {
        const auto ticks = ticksBetween(row.low, row.high, row.count);
        ASSERT_EQ(ticks.size(), row.ticks.size()) << row.low << " to " << row.high;
        const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 0.5;
        for (std::size_t i = 0; i < ticks.size(); ++i) {
            EXPECT_NEAR(ticks[i], row.ticks[i], 1e-9);
            EXPECT_EQ(tickText(ticks[i], step), row.texts[i]);
        }
    }
    for (const auto& [low, high] : {std::pair{5.0, 5.0}, {1e300, 1e308}, {-1e-12, 1e-12}}) {
        EXPECT_LE(ticksBetween(low, high, 6).size(), 8u);
    }
    EXPECT_LE(ticksBetween(0, 100, 0.1).size(), 2u);
}

View mapOf(double rangeKm) {
    return {false, rangeKm, -rangeKm, rangeKm, -rangeKm, rangeKm};
}

std::ptrdiff_t findPolar(const GateFinder& finder, double azimuthDeg, double rangeKm) {
    return finder.find(rangeKm * std::sin(azimuthDeg * kDegree),
                       rangeKm * std::cos(azimuthDeg * kDegree));
}

/* The ray with the smallest angle to a direction, by trying all. */
int nearestRay(const std::vector<double>& azimuthDeg, double wantedDeg) {
    int best = -1;
    double least = 1e9;
    for (std::size_t i = 0; i < azimuthDeg.size(); ++i) {
        const double distance = std::abs(std::remainder(azimuthDeg[i] - wantedDeg, 360.0));
        if (distance < least) {
            best = static_cast<int>(i);
        }
        least = std::min(least, distance);
    }
    return best;
}

TEST(GateFinder, FindsTheNearestRayOfAFullCircle) {
    std::vector<double> azimuthDeg;  // unsteady, not from north, some beyond 360 or below 0
    for (int i = 0; i < 360; ++i) {
        azimuthDeg.push_back(13.0 + i + 0.3 * std::sin(7.0 * i) - (i > 350 ? 360.0 : 0.0));
    }
    const Sweep sweep = sweepOf(azimuthDeg, 100, 250.0);
    const GateFinder finder(sweep, mapOf(25.0), 1.0);
    int compared = 0;
    for (double azimuth = 0.02; azimuth < 360.0; azimuth += 0.17) {
        const int expected = nearestRay(azimuthDeg, azimuth);
        /* Within a bin of the border between two rays either is right. */
        if (nearestRay(azimuthDeg, azimuth - 0.06) != nearestRay(azimuthDeg, azimuth + 0.06)) {
            continue;
        }
        ++compared;
        EXPECT_EQ(findPolar(finder, azimuth, 10.01), expected * 100 + 40) << azimuth;
    }
    EXPECT_GT(compared, 1700);
}

TEST(GateFinder, RowsOfPointsAreFoundAsPointsAre) {
    std::vector<double> azimuthDeg;
    for (int i = 0; i < 340; ++i) {
        azimuthDeg.push_back(i + 0.3 * std::sin(7.0 * i));
    }
    constexpr int kPoints = 1001;  // one on the axis, where gates and rays have their edges
    for (const double spacingM : {250.0, 0.004, 60000.0}) {
        Sweep sweep = sweepOf(azimuthDeg, 100, spacingM);
        sweep.firstGateM = 1125;
        const GateFinder finder(sweep, mapOf(25.0), 1.0);
        for (int row = 0; row < kPoints; row += 4) {
            const double y = 26.0 - row * 52.0 / (kPoints - 1);
            std::vector<std::ptrdiff_t> found(kPoints);
            finder.findRow(-26.0, 52.0 / kPoints, kPoints, y, found.data());
            for (int i = 0; i < kPoints; ++i) {
                const double x = -26.0 + (i + 0.5) * (52.0 / kPoints);
                ASSERT_EQ(found[static_cast<std::size_t>(i)], finder.find(x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST(GateFinder, LeavesGapsAndRangesWithoutGatesEmpty) {
    std::vector<double> half;
    for (int i = 0; i < 180; ++i) {
        half.push_back(i + 0.5);
    }
    half[90] = kNan;  // a ray of unknown azimuth
    Sweep sweep = sweepOf(half, 50, 1000.0);
    sweep.firstGateM = 5000.0;
    const GateFinder finder(sweep, mapOf(60.0), 1.0);
    const struct {
        double azimuthDeg, rangeKm;
        std::ptrdiff_t expected;
    } cases[] = {
        {0.5, 5.0, 0},
        {0.5, 4.6, 0},
        {0.5, 4.4, -1},
        {0.5, 5.6, 1},
        {179.5, 54.4, 179 * 50 + 49},
        {0.5, 54.6, -1},
        {270.0, 20.0, -1},
        {359.0, 20.0, -1},
        {359.9, 20.0, 15},
        {180.1, 20.0, 179 * 50 + 15},
        {181.0, 20.0, -1},
        {90.5, 20.0, -1},
        {10.5, 61.0, -1},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(findPolar(finder, row.azimuthDeg, row.rangeKm), row.expected)
            << row.azimuthDeg << " deg, " << row.rangeKm << " km";
    }
}

TEST(GateFinder, DrawsALoneRayAsWideAsItsBeam) {
    const GateFinder finder(sweepOf({0.0}, 10, 0.0), mapOf(10.0), 2.0);
    EXPECT_EQ(findPolar(finder, 0.9, 3.0), 3);  // an unknown spacing counts as 1 km
    EXPECT_EQ(findPolar(finder, 359.1, 3.0), 3);
    EXPECT_EQ(findPolar(finder, 1.2, 3.0), -1);
    EXPECT_EQ(findPolar(finder, 180.0, 3.0), -1);
    for (const double unlikely : {0.0, 12.0}) {  // counts as one degree
        const GateFinder narrow(sweepOf({0.0}, 10, 0.0), mapOf(10.0), unlikely);
        EXPECT_EQ(findPolar(narrow, 0.4, 3.0), 3);
        EXPECT_EQ(findPolar(narrow, 0.6, 3.0), -1);
    }
}

/* Forward along the beam and back again: height and ground distance by the cosine and sine rules
 * of the triangle radar, gate, centre of the Earth. */
TEST(GateFinder, FollowsTheBeamInARangeHeightSweep) {
    Sweep sweep = sweepOf(std::vector<double>(60, 171.0), 400, 500.0);
    sweep.rhi = true;
    for (int i = 0; i < 60; ++i) {
        sweep.elevationDeg[i] = 0.5 * i;
    }
    const View view = rangeHeightView(sweep, 200.0);
    EXPECT_DOUBLE_EQ(view.top, 20.0);
    EXPECT_DOUBLE_EQ(view.left, 0.0);
    const GateFinder finder(sweep, view, 1.0);
    constexpr double kRadius = 6371.0 * 4.0 / 3.0;
    for (const int ray : {0, 1, 7, 30, 59}) {
        for (const int gate : {1, 20, 100, 399}) {
            const double r = 0.5 * gate, elevation = 0.5 * ray * kDegree;
            const double centre =
                std::sqrt(r * r + kRadius * kRadius + 2.0 * r * kRadius * std::sin(elevation));
            const double ground = kRadius * std::asin(r * std::cos(elevation) / centre);
            EXPECT_EQ(finder.find(ground, centre - kRadius), ray * 400 + gate);
        }
    }
    EXPECT_EQ(finder.find(10.0, 15.0), -1);  // above the highest beam
    for (const auto& [elevationDeg, left] : {std::pair{90.0, 0.0}, {90.5, -200.0}}) {
        sweep.elevationDeg[59] = elevationDeg;
        EXPECT_DOUBLE_EQ(rangeHeightView(sweep, 200.0).left, left);
    }
}

TEST(Rasterise, MixesColoursAtEdgesAndLeavesMissingGatesOut) {
    /* East precipitation, west missing. */
    const Sweep sweep = sweepOf({90.0, 270.0}, 1, 20000.0);
    const std::vector<Field> fields{{"CCl", "", {0.0f, kNan}}};
    const View view = mapOf(10.0);
    const auto images = rasterise(fields, {quantityOf(fields[0], sweep, {})},
                                  GateFinder(sweep, view, 20.0), view, 41, 41);
    const auto pixel = [&](int x, int y) { return images[0].pixels[y * 41 + x]; };
    const Rgb blue = classColour(0.0f);
    EXPECT_EQ(pixel(38, 20), 0xff000000u | blue.red << 16 | blue.green << 8 | blue.blue);
    EXPECT_EQ(pixel(2, 20), 0u);
    EXPECT_EQ(pixel(0, 0), 0u);
    int partly = 0;
    for (const std::uint32_t value : images[0].pixels) {
        const std::uint32_t alpha = value >> 24;
        partly += alpha > 0 && alpha < 255;
        EXPECT_LE((value >> 16 & 0xff), alpha);  // colours are multiplied by alpha
        EXPECT_LE((value & 0xff), alpha);
    }
    EXPECT_GT(partly, 10);
}

TEST(Quantity, HasWordsUnitsAndAScaleOfItsOwn) {
    Sweep sweep = sweepOf({0.0}, 4, 250.0);
    sweep.nyquist = 13.5;
    const struct {
        Field field;
        const char *heading, *units;
        double low, high;
    } cases[] = {
        {{"DZ", "?", {1, 2, 3, 4}}, "Horizontal reflectivity (DZ)", "dBZ", -10, 70},
        {{"VR", "", {1, 2, 3, 4}}, "Doppler velocity (VR)", "m/s", -13.5, 13.5},
        {{"PH", "", {1, kNan, 3, 170}}, "Differential phase (PH)", "deg", 0, 180},
        {{"PH", "", {1, 2, 3, 200}}, "Differential phase (PH)", "deg", 0, 360},
        {{"PH", "", {-90, 2, 3, 200}}, "Differential phase (PH)", "deg", -180, 180},
        {{"QQ", "K ", {1, 2, 7, kInfinity}}, "QQ", "K", 1, 2},
        {{"Q\xff\x01 ", "", {kNan, kNan, kNan, kNan}}, "Q??", "", 0, 1},
        {{"QQ", "", {4, 4, 4, 4}}, "QQ", "", 3, 5},
    };
    for (const auto& row : cases) {
        const Quantity quantity = quantityOf(row.field, sweep, {});
        EXPECT_EQ(quantity.heading, row.heading);
        EXPECT_EQ(quantity.units, row.units);
        EXPECT_DOUBLE_EQ(quantity.scale.low, row.low) << row.heading;
        EXPECT_DOUBLE_EQ(quantity.scale.high, row.high) << row.heading;
    }
}

TEST(Quantity, BrokenValuesDoNotStretchTheScale) {
    Field field{"QQ", "", {}};
    for (int i = 0; i < 1000; ++i) {
        field.values.push_back(0.01f * i);
    }
    field.values[3] = -30000.0f;
    field.values[4] = 1e30f;
    const Quantity quantity = quantityOf(field, sweepOf({0.0}, 1000, 1.0), {});
    EXPECT_DOUBLE_EQ(quantity.scale.low, 0.0);
    EXPECT_DOUBLE_EQ(quantity.scale.high, 10.0);
}

TEST(Quantity, TakesTheEndsThatAreAskedFor) {
    const Field field{"DZ", "dBZ", {1.0f}};
    PictureOptions options;
    options.displayMax = 30.0;
    const Quantity quantity = quantityOf(field, sweepOf({0.0}, 1, 1.0), options);
    EXPECT_EQ(quantity.scale.low, -10.0);
    EXPECT_EQ(quantity.scale.high, 30.0);
    Rgb colour;
    ASSERT_TRUE(quantity.scale.colour(45.0f, colour));
    EXPECT_EQ(colour, colourAt(Palette::kReflectivity, 1.0));
    EXPECT_FALSE(quantity.scale.colour(kNan, colour));
    options.displayMax = -10.0;
    EXPECT_THROW(quantityOf(field, sweepOf({0.0}, 1, 1.0), options), std::invalid_argument);
}

TEST(ClassField, SharesCountEveryGate) {
    const auto shares = classShares({0, 0, 5, 3, kNan, kNan, kNan, 7});
    EXPECT_EQ(shares, (std::array<double, 6>{0.25, 0.125, 0.125, 0.375, 0.0, 0.125}));
    EXPECT_EQ(classShares({}), (std::array<double, 6>{}));
}

}  // namespace
}  // namespace cli
