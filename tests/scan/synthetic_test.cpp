/* The synthetic scan: the same for one seed, and like measured scans in what the classifier sees.
 */
#include "scan/synthetic/synthetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"

namespace scan {
namespace {

constexpr float kRain = 0.0f, kClutter = 5.0f, kNoise = 3.0f;

const SyntheticScan& scanOfSeed5() {
    static const SyntheticScan scan = makeSyntheticScan(5);
    return scan;
}

double snrOf(const SyntheticScan& scan, std::size_t i) {
    const int gate = std::max<int>(1, static_cast<int>(i % scan.ngates));
    return scan.zhh[i] - 20.0 * std::log10(gate * scan.gateSpacingM / 1000.0) +
           scan.radarConstantDb;
}

/* The value below which a share of the echoes of one class lies; NaN left out. */
double percentile(const SyntheticScan& scan, const std::vector<double>& field, float truth,
                  double share) {
    std::vector<double> values;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (scan.truth[i] != truth || std::isnan(field[i])) {
            continue;
        }
        if (truth == kNoise || snrOf(scan, i) >= scan.minSnrDb) {
            values.push_back(field[i]);
        }
    }
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(share * (values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

/* As the classifier sees it: only echoes above the threshold take part. */
std::vector<double> textureOf(const SyntheticScan& scan, const std::vector<double>& field) {
    std::vector<float> values(field.begin(), field.end()), mask(field.size()), out(field.size());
    for (std::size_t i = 0; i < field.size(); ++i) {
        mask[i] = snrOf(scan, i) < scan.minSnrDb ? 3.0f : 0.0f;
    }
    CDSP().GetNxNPointStdWithMask(values.data(), mask.data(), scan.ngates, scan.nrays, out.data(),
                                  5, 3);
    return {out.begin(), out.end()};
}

/* Published figures rest on these scans: another drawing of the scene is another demonstration. */
TEST(SyntheticScan, OfASeedStaysTheSame) {
    const SyntheticScan scan = makeSyntheticScan(5, 90, 400);
    const struct {
        const char* name;
        const std::vector<double>& field;
        double mean, rootMeanSquare;
    } cases[] = {
        {"Z", scan.zhh, 19.821194448589846, 25.133947612919673},
        {"ZDR", scan.zdr, 0.4020503706237308, 1.719353936265493},
        {"PhiDP", scan.phidp, 33.573681369177564, 61.09093968154788},
        {"RhoHV", scan.rhohv, 0.8026546622035977, 0.8458604389381815},
        {"velocity", scan.velocity, -0.6333434137032692, 9.486783357284432},
        {"width", scan.width, 2.603724827699979, 3.5709010698110837},
        {"LDR", scan.ldr, -21.690220631059262, 23.16054080239601},
        {"likelihood", scan.likelihood, 0.2390455643688794, 0.3108223596102868},
    };
    for (const auto& row : cases) {
        double sum = 0.0, squares = 0.0, n = 0.0;
        for (const double value : row.field) {
            if (std::isnan(value)) {
                continue;
            }
            sum += value;
            squares += value * value;
            ++n;
        }
        EXPECT_NEAR(sum / n, row.mean, 1e-6) << row.name;
        EXPECT_NEAR(std::sqrt(squares / n), row.rootMeanSquare, 1e-6) << row.name;
    }
    EXPECT_EQ(std::count(scan.truth.begin(), scan.truth.end(), kRain), 21673);
    EXPECT_EQ(std::count(scan.truth.begin(), scan.truth.end(), kClutter), 7481);
    EXPECT_EQ(std::count(scan.truth.begin(), scan.truth.end(), kNoise), 6846);
}

TEST(SyntheticScan, WorksForAnySize) {
    for (const auto& [nrays, ngates] : {std::pair{1, 1}, {1, 700}, {720, 2}}) {
        const SyntheticScan scan = makeSyntheticScan(1, nrays, ngates);
        EXPECT_EQ(scan.zhh.size(), static_cast<std::size_t>(nrays) * ngates);
        EXPECT_TRUE(std::all_of(scan.zhh.begin(), scan.zhh.end(),
                                [](double dBZ) { return std::isfinite(dBZ); }));
    }
    EXPECT_THROW(makeSyntheticScan(1, 0, 5), std::invalid_argument);
    EXPECT_THROW(makeSyntheticScan(1, 5, -1), std::invalid_argument);
}

/* Medians where measured scans have theirs; ranges leave room for another drawing of the scene. */
TEST(SyntheticScan, LooksLikeMeasuredScans) {
    const SyntheticScan& scan = scanOfSeed5();
    const auto sdZ = textureOf(scan, scan.zhh), sdZdr = textureOf(scan, scan.zdr);
    const auto sdPhi = textureOf(scan, scan.phidp), sdRho = textureOf(scan, scan.rhohv);
    const struct {
        const char* name;
        const std::vector<double>& field;
        float truth;
        double share, low, high;
    } cases[] = {
        {"SD(Z) of clutter", sdZ, kClutter, 0.5, 4.0, 10.0},
        {"SD(Z) of rain", sdZ, kRain, 0.5, 0.9, 2.5},
        {"SD(ZDR) of clutter", sdZdr, kClutter, 0.5, 2.0, 4.5},
        {"SD(ZDR) of rain", sdZdr, kRain, 0.5, 0.2, 0.5},
        {"SD(PhiDP) of clutter", sdPhi, kClutter, 0.5, 45.0, 95.0},
        {"SD(PhiDP) of rain", sdPhi, kRain, 0.5, 1.0, 4.0},
        {"SD(RhoHV) of clutter", sdRho, kClutter, 0.5, 0.15, 0.25},
        {"SD(RhoHV) of rain", sdRho, kRain, 0.5, 0.002, 0.02},
        {"RhoHV of noise", scan.rhohv, kNoise, 0.1, 0.0, 0.3},
        {"velocity of clutter", scan.velocity, kClutter, 0.5, -0.1, 0.1},
        {"velocity of rain, upper", scan.velocity, kRain, 0.9, 8.0, 16.0},
        {"LDR of rain", scan.ldr, kRain, 0.5, -30.0, -25.0},
        {"LDR of clutter", scan.ldr, kClutter, 0.5, -14.0, -9.0},
        {"Z of clutter, upper", scan.zhh, kClutter, 0.95, 50.0, 65.0},
        {"Z of rain, upper", scan.zhh, kRain, 0.99, 42.0, 56.0},
    };
    for (const auto& row : cases) {
        const double value = percentile(scan, row.field, row.truth, row.share);
        EXPECT_TRUE(value >= row.low && value <= row.high) << row.name << ": " << value;
    }
}

}  // namespace
}  // namespace scan
