/* Pictures as files: what is where, the format by the ending, odd sweeps, refusals. */
#include "picture/picture.h"

#include <cairo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "picture/palette.h"
#include "picture_sweep.h"
#include "support/temp_dir.h"

namespace cli {

using namespace scan;

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

class PictureFile : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return directory_.file(name); }

    static std::string contents(const std::string& path) {
        const clutter::test::ByteVector bytes = clutter::test::readFile(path);
        return {bytes.begin(), bytes.end()};
    }
    std::ptrdiff_t filesInDirectory() const {
        return std::distance(std::filesystem::directory_iterator(directory_.path()), {});
    }

    clutter::test::TempDir directory_;
    Scan scan_;
};

/* Centre of the pixels of one colour in the part of a PNG above its legend. */
struct Spot {
    double x = 0, y = 0;
    long pixels = 0;
};

Spot spotOf(const std::string& path, Rgb colour, double share) {
    using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
    const Surface surface(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy);
    const unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int width = cairo_image_surface_get_width(surface.get());
    const int height = static_cast<int>(share * cairo_image_surface_get_height(surface.get()));
    const int stride = cairo_image_surface_get_stride(surface.get());
    Spot spot;
    for (int y = 0; y < height; ++y) {
        const auto* row = reinterpret_cast<const std::uint32_t*>(data + y * stride);
        for (int x = 0; x < width; ++x) {
            const std::uint32_t rgb = row[x] & 0xffffff;
            const std::uint32_t wanted = colour.red << 16 | colour.green << 8 | colour.blue;
            if (rgb != wanted) {
                continue;
            }
            spot.x += x;
            spot.y += y;
            ++spot.pixels;
        }
    }
    spot.x /= std::max(1L, spot.pixels);
    spot.y /= std::max(1L, spot.pixels);
    return spot;
}

TEST_F(PictureFile, HasNorthUpAndEastToTheRight) {
    const Sweep sweep =
        sweepOf({5, 15, 25, 35, 45, 55, 65, 75, 85,            // north-east: rain
                 95, 105, 115, 125, 135, 145, 155, 165, 175},  // south-east: clutter
                1, 100000.0);
    std::vector<float> classes(18, 0.0f);
    std::fill(classes.begin() + 9, classes.end(), 5.0f);
    PictureOptions options;
    options.widthPx = 500;
    options.maxRangeKm = 40.0;
    drawPanels(scan_, sweep, {scan::Field{"CCl", "", classes}}, options, path("a.png"));
    const Spot rain = spotOf(path("a.png"), classColour(0.0f), 0.85);
    const Spot clutter = spotOf(path("a.png"), classColour(5.0f), 0.85);
    const Spot missing = spotOf(path("a.png"), kNoDataColour, 0.85);
    ASSERT_GT(rain.pixels, 10000);
    EXPECT_NEAR(rain.x, clutter.x, 3.0);
    EXPECT_LT(rain.y, clutter.y - 80.0);
    EXPECT_LT(missing.x, rain.x - 80.0);
    EXPECT_NEAR(missing.y, 0.5 * (rain.y + clutter.y), 3.0);
    EXPECT_NEAR(static_cast<double>(rain.pixels), static_cast<double>(clutter.pixels),
                0.05 * rain.pixels);
    EXPECT_NEAR(static_cast<double>(missing.pixels), 2.0 * rain.pixels, 0.1 * missing.pixels);
}

/* Its pointed ends have the colours of the extremes, at one height, as far left as right. */
TEST_F(PictureFile, HasItsScaleUnderTheMiddleOfTheMap) {
    const Sweep sweep = sweepOf({0, 90, 180, 270}, 1, 20000.0);
    PictureOptions options;
    options.widthPx = 500;
    drawPanels(scan_, sweep, {{"DZ", "", std::vector<float>(4, kNan)}}, options, path("a.png"));
    const Spot map = spotOf(path("a.png"), kNoDataColour, 0.85);
    const Spot low = spotOf(path("a.png"), colourAt(Palette::kReflectivity, 0.0), 1.0);
    const Spot high = spotOf(path("a.png"), colourAt(Palette::kReflectivity, 1.0), 1.0);
    EXPECT_GT(map.pixels, 20000);
    EXPECT_GT(map.x, 255) << "the labels on the left need more room than the right edge";
    EXPECT_GT(low.pixels, 20);
    EXPECT_NEAR(low.pixels, high.pixels, 0.2 * low.pixels);
    EXPECT_NEAR(low.y, high.y, 0.7);
    EXPECT_GT(low.y, map.y + 150);
    EXPECT_NEAR(0.5 * (low.x + high.x), map.x, 2.0);
    EXPECT_NEAR(high.x - low.x, 430, 30);
}

TEST_F(PictureFile, IsOfTheFormatItsNameSays) {
    const Sweep sweep = sweepOf({10.0, 20.0}, 3, 1000.0);
    const Field field{"DZ", "dBZ", {1, 2, 3, kNan, 50, 60}};
    for (const auto& [name, start] :
         {std::pair{"a.png", "\x89PNG"}, {"b.SVG", "<?xml"}, {"c.pdf", "%PDF"}}) {
        drawClasses(scan_, sweep, field, {0, 3, 5, kNan, 0, 0}, {}, path(name));
        EXPECT_EQ(contents(path(name)).rfind(start, 0), 0u) << name;
    }
    EXPECT_EQ(filesInDirectory(), 3);  // no temporary file is left
}

/* The points of a vector picture where a line turns or a character begins. */
std::vector<std::pair<double, double>> pointsOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::pair<double, double>> points;
    for (std::string line; std::getline(file, line);) {
        const bool drawn = line.find("<path style=\"fill:none") != std::string::npos &&
                           line.find("transform") == std::string::npos;
        std::size_t at = drawn ? line.find(" d=\"") + 4 : line.find(" x=\"") + 4;
        if (!drawn && line.find("<use xlink:href=\"#glyph") == std::string::npos) {
            continue;
        }
        std::string numbers = line.substr(at);
        std::replace_if(
            numbers.begin(), numbers.end(),
            [](char c) { return std::isdigit(c) == 0 && c != '.' && c != '-'; }, ' ');
        std::istringstream words(numbers);
        for (double x = 0, y = 0; words >> x >> y;) {
            points.emplace_back(x, y);
        }
    }
    return points;
}

TEST_F(PictureFile, StaysOnItsPage) {
    Sweep sweep = sweepOf({2, 92, 182, 272}, 4, 4000.0);
    PictureOptions options;
    options.widthPx = 900;
    for (const bool rhi : {false, true}) {
        sweep.rhi = rhi;
        sweep.elevationDeg = {1, 20, 40, 60};
        const Field field{"DZ", "dBZ", std::vector<float>(16, 20.0f)};
        const Field classes{"CCl", "", std::vector<float>(16, 5.0f)};
        drawPanels(scan_, sweep, {field, classes}, options, path("a.svg"));
        const std::string page = contents(path("a.svg"));
        const auto sizeOf = [&](const char* side) {
            return std::stod(page.substr(page.find(side) + std::strlen(side)));
        };
        const double width = sizeOf(" width=\""), height = sizeOf(" height=\"");
        EXPECT_EQ(width, 900);
        const auto points = pointsOf(path("a.svg"));
        EXPECT_GT(points.size(), 300u) << rhi;
        for (const auto& [x, y] : points) {
            EXPECT_TRUE(x > 0 && x < width && y > 0 && y < height) << rhi << " " << x << " " << y;
        }
    }
}

/* The radar and the site, once each; of a file that names neither, the name of the file. */
TEST_F(PictureFile, IsEntitledByWhatIsKnown) {
    const Sweep sweep = sweepOf({10.0, 20.0}, 2, 1000.0);
    PictureOptions options;
    options.widthPx = 480;
    const auto drawn = [&](const char* radar, const char* site, const char* file) {
        scan_.radarName = radar;
        scan_.siteName = site;
        scan_.path = file;
        drawPanels(scan_, sweep, {{"DZ", "dBZ", {1, 2, 3, 4}}}, options, path("a.png"));
        return contents(path("a.png"));
    };
    const std::string one = drawn("ABC", "ABC", "x/other");
    EXPECT_EQ(drawn("ABC", "", "x/other"), one);
    EXPECT_EQ(drawn("", "ABC", "x/other"), one);
    EXPECT_EQ(drawn("", "", "x/ABC"), one);
    EXPECT_EQ(drawn("ABC", "DE", "x/other"), drawn("", "", "x/ABC, DE"));
    EXPECT_NE(drawn("ABC", "DE", "x/other"), one);
}

/* Whatever a file holds, a picture comes out: sizes, missing angles, odd text and numbers. */
TEST_F(PictureFile, SurvivesOddSweeps) {
    const auto rhi = [](Sweep sweep) {
        sweep.rhi = true;
        return sweep;
    };
    const auto at = [](Sweep sweep, double firstGateM, double spacingM) {
        sweep.firstGateM = firstGateM;
        sweep.gateSpacingM = spacingM;
        return sweep;
    };
    const std::vector<double> many(2000, 77.0);
    const std::pair<const char*, Sweep> sweeps[] = {
        {"one gate", sweepOf({3.0}, 1, 250.0)},
        {"one gate of no spacing", sweepOf({3.0}, 1, 0.0)},
        {"one range-height ray", rhi(sweepOf({3.0}, 5, 250.0))},
        {"long rays", sweepOf({3.0, 4.0}, 16384, 150.0)},
        {"angles unknown", sweepOf({kNan, kInfinity}, 4, 250.0)},
        {"elevations unknown", rhi(sweepOf({kNan, kInfinity}, 4, 250.0))},
        {"angles far off", sweepOf({-1e9, 1e9, 720.0}, 4, 250.0)},
        {"one azimuth for all", sweepOf(many, 2, 250.0)},
        {"spacing unknown", at(sweepOf({1.0, 2.0}, 4, 0.0), kNan, kNan)},
        {"gates behind the radar", at(sweepOf({1.0, 2.0}, 4, 0.0), -1e6, 250.0)},
        {"tiny gates", at(sweepOf({1.0, 2.0}, 4, 0.0), 0.0, 1e-3)},
        {"huge gates", at(sweepOf({1.0, 2.0}, 4, 0.0), 0.0, 1e7)},
    };
    scan_.siteName = "\xff\xfe(\n\x01";
    PictureOptions options;
    options.widthPx = 480;
    for (const auto& [name, sweep] : sweeps) {
        const std::size_t n = static_cast<std::size_t>(sweep.nrays) * sweep.ngates;
        std::vector<float> wild(n, kNan);
        for (std::size_t i = 0; i < n; i += 3) {
            wild[i] = i % 2 ? kInfinity : -1e38f;
        }
        for (const char* file : {"odd.png", "odd.svg", "odd.pdf"}) {
            EXPECT_NO_THROW(drawPanels(
                scan_, sweep, {{"D\x80", "\xc3", wild}, {"DZ", "", std::vector<float>(n, kNan)}},
                options, path(file)))
                << name << ", " << file;
            EXPECT_GT(contents(path(file)).size(), 1000u);
        }
    }
}

TEST_F(PictureFile, RefusesWhatItCannotDraw) {
    const Sweep sweep = sweepOf({10.0, 20.0}, 2, 1000.0);
    const Field field{"DZ", "dBZ", {1, 2, 3, 4}}, shortField{"DZ", "", {1, 2, 3}};
    Sweep angleMissing = sweep;
    angleMissing.azimuthDeg.pop_back();
    PictureOptions narrow, wide, endless;
    narrow.widthPx = 100;
    wide.widthPx = 1000000;
    endless.maxRangeKm = kInfinity;
    std::ofstream(path("a.png")) << "earlier";
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"ending", [&] { drawPanels(scan_, sweep, {field}, {}, path("a.jpg")); }},
        {"no ending", [&] { drawPanels(scan_, sweep, {field}, {}, path("png")); }},
        {"no field", [&] { drawPanels(scan_, sweep, {}, {}, path("a.png")); }},
        {"short field", [&] { drawPanels(scan_, sweep, {shortField}, {}, path("a.png")); }},
        {"no gates",
         [&] {
             drawPanels(scan_, Sweep{}, {scan::Field{"DZ", "", {}}}, {}, path("a.png"));
         }},
        {"angle missing", [&] { drawPanels(scan_, angleMissing, {field}, {}, path("a.png")); }},
        {"narrow", [&] { drawPanels(scan_, sweep, {field}, narrow, path("a.png")); }},
        {"wide", [&] { drawPanels(scan_, sweep, {field}, wide, path("a.png")); }},
        {"endless", [&] { drawPanels(scan_, sweep, {field}, endless, path("a.png")); }},
    };
    for (const auto& [name, draw] : cases) {
        EXPECT_THROW(draw(), std::invalid_argument) << name;
    }
    EXPECT_THROW(drawPanels(scan_, sweep, {field}, {}, path("nowhere/a.png")), std::runtime_error);
    EXPECT_EQ(contents(path("a.png")), "earlier");
    EXPECT_EQ(filesInDirectory(), 1);
    drawPanels(scan_, sweep, {field}, {}, path("a.png"));
    EXPECT_EQ(contents(path("a.png")).rfind("\x89PNG", 0), 0u);
}

}  // namespace
}  // namespace cli
