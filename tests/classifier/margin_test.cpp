/*
 * Margins, probabilities and reasons against their definitions in double precision.
 */
#include <algorithm>
#include <cmath>
#include <utility>

#include "classifier/handle_scan.h"
#include "support/literal/classification.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;
using clutter::Classifier;

/* Raw inputs only, so that the inputs are the values: velocity, LDR, likelihood, RhoHV, width. */
constexpr const char* kTags[] = {"Vel", "LDR", "", "Rhv", "Wid"};

struct RawScan {
    std::vector<float> values[5];
    std::vector<std::uint8_t> noise;

    explicit RawScan(std::size_t n) : noise(n, 0) {
        for (auto& field : values) {
            field.resize(n);
        }
    }

    clutter_scan handle() {
        clutter_scan scan = {};
        scan.size = sizeof scan;
        scan.rays = 1;
        scan.gates = static_cast<std::int64_t>(noise.size());
        clutter_field* const fields[] = {&scan.velocity, &scan.ldr, &scan.likelihood, &scan.rhohv,
                                         &scan.width};
        for (int f = 0; f < 5; ++f) {
            fields[f]->values = values[f].data();
        }
        scan.noise = noise.data();
        return scan;
    }
};

double degree(const literal::Function& table, float x) {
    return literal::interpolate(table.px, table.py, x);
}

/* Margins by the definition; each input's share too. */
class Definition {
  public:
    explicit Definition(const std::string& directory) {
        for (int i = 0; i < 5; ++i) {
            if (i == 2) {
                continue;
            }
            const std::string stem = directory + "/cal_mf_" + kTags[i];
            clutter_[i] = literal::readFunction(stem + "_clutter.dat");
            weather_[i] = literal::readFunction(stem + "_precipi.dat");
        }
    }

    double share(const RawScan& scan, int input, std::size_t at) const {
        const float x = scan.values[input][at];
        if (input == 2) {
            return std::log(static_cast<double>(1.0f - x) / static_cast<double>(x));
        }
        return std::log(degree(weather_[input], x) / degree(clutter_[input], x));
    }

    long double margin(const RawScan& scan, std::size_t at) const {
        long double above = 1.0L, below = 1.0L;
        for (int i = 0; i < 5; ++i) {
            const float x = scan.values[i][at];
            above *= i == 2 ? static_cast<double>(1.0f - x) : degree(weather_[i], x);
            below *= i == 2 ? static_cast<double>(x) : degree(clutter_[i], x);
        }
        return std::log(above / below);
    }

  private:
    literal::Function clutter_[5], weather_[5];
};

RawScan randomRawScan(std::size_t n) {
    RawScan scan(n);
    std::mt19937 random(2);
    std::uniform_real_distribution<float> uniform;
    for (std::size_t j = 0; j < n; ++j) {
        scan.values[0][j] = 20.0f * uniform(random) - 10.0f;
        scan.values[1][j] = -40.0f * uniform(random);
        // From evenly balanced to nearly sure: small margins must be exact too.
        const float spread = std::pow(10.0f, -6.0f * uniform(random));
        scan.values[2][j] = 0.5f + 0.499f * spread * (2.0f * uniform(random) - 1.0f);
        scan.values[3][j] = 0.5f + 0.5f * uniform(random);
        scan.values[4][j] = 5.0f * uniform(random);
        if (j % 4 != 0) {
            continue;  // with neutral tables, the likelihood alone decides
        }
        scan.values[0][j] = scan.values[1][j] = scan.values[3][j] = scan.values[4][j] = 1e7f;
    }
    return scan;
}

/* Tables with a tooth, with different abscissas, and with very small degrees. */
void writeHardTables(const TempDir& directory) {
    const struct {
        const char* name;
        const char* text;
    } files[] = {
        {"Vel_clutter", "-9 .2 -1 .3 0 .9 0.001 1e-7 0.002 .8 5 .1"},
        {"Vel_precipi", "-8 .9 0 .2 3 .7"},
        {"LDR_clutter", "-30 1e-6 -10 .9"},
        {"LDR_precipi", "-30 1 -10 1e-6"},
        {"Rhv_clutter", "0.5 1e-40 0.9 1e-60 1 1e-3"},
        {"Rhv_precipi", "0.5 1e-3 0.9 1e-50 1 1e-2"},
        {"Wid_clutter", "0 .5 2 .5 2 .1 4 .1"},
        {"Wid_precipi", "0 .5 2 .5 2 .9 4 .9"},
    };
    for (const auto& file : files) {
        writeText(directory.file(std::string("cal_mf_") + file.name + ".dat"), file.text);
    }
}

class Margin : public testing::TestWithParam<bool> {};

TEST_P(Margin, IsThatOfTheDefinition) {
    const TempDir hard;
    writeHardTables(hard);
    const std::string directory = GetParam() ? hard.path() : kMembershipDirectory;
    const Classifier classifier(directory,
                                CLUTTER_ALL_INPUTS & ~static_cast<unsigned>(CLUTTER_TEXTURES));
    const Definition definition(directory);
    RawScan scan = randomRawScan(5000);
    const Answer answer = classifyAll(classifier, scan.handle());
    Answer quick(scan.handle());
    clutter_result result = quick.request();
    result.deciding = nullptr;
    std::fill(std::begin(result.contributions), std::end(result.contributions), nullptr);
    classifier.classify(scan.handle(), handleOptions(), result);
    int close = 0;
    for (std::size_t j = 0; j < scan.noise.size(); ++j) {
        const auto expected = static_cast<double>(definition.margin(scan, j));
        close += std::fabs(expected) < 1e-3 ? 1 : 0;
        for (const Answer* given : {&std::as_const(answer), &std::as_const(quick)}) {
            const auto margin = static_cast<double>(given->margin[j]);
            ASSERT_LE(std::fabs(margin - expected), 1e-5 * std::fabs(expected)) << j;
            ASSERT_EQ(given->classes[j], margin >= 0.0 ? CLUTTER_PRECIPITATION : CLUTTER_GROUND);
            ASSERT_NEAR(given->probability[j], 1.0 / (1.0 + std::exp(-expected)), 1e-6) << j;
        }
        int most = -1;
        double mostShare = 0.0;
        for (int i = 0; i < 5; ++i) {
            const double share = definition.share(scan, i, j);
            ASSERT_NEAR(answer.contributions[4 + i][j], share, 1e-5 * std::fabs(share)) << j;
            const double toClass = expected >= 0.0 ? share : -share;
            if (toClass > mostShare) {
                most = i;
            }
            mostShare = std::max(mostShare, toClass);
        }
        const int deciding = expected == 0.0 ? CLUTTER_BY_NONE : 4 + most;
        ASSERT_EQ(answer.deciding[j], deciding) << j;
    }
    EXPECT_TRUE(GetParam() || close > 100) << "margins near 0 were tried";
}

INSTANTIATE_TEST_SUITE_P(Tables, Margin, testing::Bool(),
                         [](const auto& info) { return info.param ? "Hard" : "Packaged"; });

TEST(Certainty, OfStrengthsThatVanishIsInfinite) {
    const Classifier classifier(kMembershipDirectory, CLUTTER_LIKELIHOOD);
    RawScan scan(6);
    scan.values[2] = {0.0f, 1.0f, 0.5f, 2.0f, 0.25f, std::numeric_limits<float>::quiet_NaN()};
    clutter_scan given = scan.handle();
    clutter_options options = handleOptions();
    options.inputs = CLUTTER_LIKELIHOOD;
    const Answer answer = classifyAll(classifier, given, options);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(answer.margin[0], kInfinity);
    EXPECT_EQ(answer.probability[0], 1.0f);
    EXPECT_EQ(answer.margin[1], -kInfinity);
    EXPECT_NEAR(answer.probability[1], 0.0f, 1e-30f);
    EXPECT_EQ(answer.margin[2], 0.0f);
    EXPECT_EQ(answer.classes[2], CLUTTER_PRECIPITATION);
    EXPECT_EQ(answer.deciding[2], CLUTTER_BY_NONE);
    EXPECT_EQ(answer.margin[3], -kInfinity);
    EXPECT_FLOAT_EQ(answer.margin[4], std::log(3.0f));
    EXPECT_TRUE(std::isnan(answer.margin[5]) && std::isnan(answer.probability[5]));
    EXPECT_EQ(answer.classes[5], CLUTTER_GROUND);
}

/* The window's mean of the textures' margins, plus the margins of the other inputs. */
class WindowMean {
  public:
    WindowMean(const Answer& textures, const Answer& others, const clutter_scan& scan)
        : textures_(textures), others_(others), rays_(scan.rays), gates_(scan.gates) {}

    double at(std::int64_t ray, std::int64_t gate, const clutter_options& options) const {
        double sum = 0.0;
        int members = 0;
        const int rays = options.neighbourhood_rays / 2, gates = options.neighbourhood_gates / 2;
        for (std::int64_t r = ray - rays; r <= ray + rays; ++r) {
            if (options.sector != 0 && (r < 0 || r >= rays_)) {
                continue;
            }
            for (std::int64_t g = gate - gates; g <= gate + gates; ++g) {
                if (g < 0 || g >= gates_) {
                    continue;
                }
                const auto i = index((r + 10 * rays_) % rays_, g);
                if (textures_.classes[i] == CLUTTER_NOISE) {
                    continue;
                }
                sum += textures_.margin[i];
                ++members;
            }
        }
        return sum / members + others_.margin[index(ray, gate)];
    }

    std::size_t index(std::int64_t ray, std::int64_t gate) const {
        return static_cast<std::size_t>(ray * gates_ + gate);
    }

  private:
    const Answer& textures_;
    const Answer& others_;
    std::int64_t rays_, gates_;
};

TEST(Neighbourhood, IsTheMeanOverEchoesOfTheWindow) {
    const Classifier classifier(kMembershipDirectory);
    const struct {
        int rays, gates, windowGates, windowRays, sector;
    } cases[] = {{12, 70, 5, 3, 0}, {12, 70, 5, 3, 1}, {5, 40, 1, 7, 0}, {5, 40, 9, 7, 1},
                 {1, 30, 3, 3, 0},  {6, 7, 11, 1, 0},  {4, 300, 1, 1, 0}};
    for (const auto& c : cases) {
        TestScan scan = makeTestScan(c.rays, c.gates, 3, 0.7);
        const clutter_scan given = handleScan(scan);
        clutter_options options = handleOptions();
        options.sector = c.sector;
        options.inputs = CLUTTER_TEXTURES;
        const Answer textures = classifyAll(classifier, given, options);
        options.inputs = CLUTTER_VELOCITY | CLUTTER_LDR;
        const Answer others = classifyAll(classifier, given, options);
        options.inputs |= CLUTTER_TEXTURES;
        options.neighbourhood_gates = c.windowGates;
        options.neighbourhood_rays = c.windowRays;
        const Answer answer = classifyAll(classifier, given, options);
        const WindowMean mean(textures, others, given);
        for (int r = 0; r < c.rays; ++r) {
            for (int g = 0; g < c.gates; ++g) {
                const std::size_t i = mean.index(r, g);
                if (textures.classes[i] == CLUTTER_NOISE) {
                    ASSERT_EQ(answer.classes[i], CLUTTER_NOISE);
                    continue;
                }
                ASSERT_NEAR(answer.margin[i], mean.at(r, g, options), 1e-4) << r << " " << g;
                ASSERT_EQ(answer.classes[i],
                          answer.margin[i] >= 0.0f ? CLUTTER_PRECIPITATION : CLUTTER_GROUND);
            }
        }
    }
}

/* The explanation repeats the classification, and its turning values do turn the verdict. */
TEST(Explanation, AgreesWithTheClassesAndTurnsThem) {
    const Classifier classifier(kMembershipDirectory);
    TestScan scan = makeTestScan(9, 60, 4, 0.9);
    int turned = 0;
    for (const int window : {0, 3}) {
        clutter_options options = handleOptions();
        options.neighbourhood_gates = options.neighbourhood_rays = window;
        const Answer answer = classifyAll(classifier, handleScan(scan), options);
        for (std::size_t i = 0; i < answer.classes.size(); i += 7) {
            const auto ray = static_cast<std::int64_t>(i / 60);
            const auto gate = static_cast<std::int64_t>(i % 60);
            const clutter_explanation why =
                classifier.explain(handleScan(scan), options, ray, gate);
            ASSERT_EQ(why.gate_class, answer.classes[i]);
            ASSERT_EQ(why.deciding, answer.deciding[i]);
            if (why.gate_class == CLUTTER_NOISE) {
                ASSERT_EQ(why.inputs, 0u);
                ASSERT_TRUE(std::isnan(why.input[0].value) && why.turning == -1);
                continue;
            }
            ASSERT_EQ(why.margin, answer.margin[i]);
            double sum = why.neighbourhood;
            for (int k = 0; k < 8; ++k) {
                sum += why.input[k].contribution;
                ASSERT_NEAR(why.input[k].contribution, answer.contributions[k][i], 1e-4);
            }
            ASSERT_NEAR(sum, why.margin, 1e-4);
            ASSERT_EQ(why.input[4].value, static_cast<float>(scan.fields[4][i]));
            ASSERT_TRUE(std::isnan(why.input[8].value)) << "no spectrum width";
            // Velocity, LDR and likelihood are values of the gate alone: put them in.
            for (const int k : {4, 5, 6}) {
                const double value = why.input[k].turning_value;
                if (std::isnan(value)) {
                    continue;
                }
                TestScan other = scan;
                other.fields[k][i] = value;
                const bool weather = why.gate_class == CLUTTER_PRECIPITATION;
                const clutter_explanation then =
                    classifier.explain(handleScan(other), options, ray, gate);
                ASSERT_NE(then.gate_class == CLUTTER_PRECIPITATION, weather) << k << " " << value;
                // Half way there nothing has changed yet.
                other.fields[k][i] = 0.5 * (value + scan.fields[k][i]);
                ASSERT_EQ(classifier.explain(handleScan(other), options, ray, gate).gate_class,
                          why.gate_class);
                ++turned;
            }
        }
    }
    EXPECT_GT(turned, 20);
}

/* A likelihood of 0 or 1 is infinitely sure: of the other inputs none turns the verdict, and the
 * likelihood itself still does. */
TEST(Explanation, TurnsWhatAnInfiniteMarginRestsOn) {
    const Classifier classifier(kMembershipDirectory);
    for (const int window : {0, 3}) {
        for (const double likelihood : {0.0, 1.0}) {
            TestScan scan = makeTestScan(5, 40, 4, 1.0);
            std::fill(scan.fields[6].begin(), scan.fields[6].end(), likelihood);
            clutter_options options = handleOptions();
            options.neighbourhood_gates = options.neighbourhood_rays = window;
            const clutter_explanation why = classifier.explain(handleScan(scan), options, 2, 20);
            ASSERT_TRUE(std::isinf(why.margin));
            EXPECT_TRUE(std::isfinite(why.neighbourhood));
            EXPECT_EQ(why.gate_class, likelihood == 0.0 ? CLUTTER_PRECIPITATION : CLUTTER_GROUND);
            EXPECT_EQ(why.turning, 6);
            for (int k = 0; k < 8; ++k) {
                EXPECT_EQ(std::isnan(why.input[k].turning_value), k != 6) << k;
            }
            scan.fields[6][2 * 40 + 20] = why.input[6].turning_value;
            const auto then = classifier.explain(handleScan(scan), options, 2, 20);
            EXPECT_NE(then.gate_class, why.gate_class);
        }
    }
}

/* Degrees beyond all numbers: infinity times zero. */
TEST(Neighbourhood, LeavesOutMembersWithoutAValue) {
    const TempDir directory;
    for (const char* tag : {"sZhh", "sZdr", "sPdp"}) {
        const bool vanishes = std::string(tag) == "sPdp";
        writeText(directory.file(std::string("cal_mf_") + tag + "_clutter.dat"), "0 .5 1 .5");
        writeText(directory.file(std::string("cal_mf_") + tag + "_precipi.dat"),
                  vanishes ? "5 .25 5.001 0" : "5 1 5.001 1e200");
    }
    const Classifier classifier(directory.path(), 7);
    TestScan scan = makeTestScan(1, 30, 1, 1.0);
    for (int f = 0; f < 3; ++f) {
        std::fill(scan.fields[f].begin(), scan.fields[f].end(), 50.0);
        scan.fields[f][15] = 100.0;  // windows that hold it have textures above 5.001
    }
    clutter_options options = handleOptions();
    options.texture_gates = 5;
    options.texture_rays = 1;
    options.sector = 1;
    const Answer own = classifyAll(classifier, handleScan(scan), options);
    options.neighbourhood_gates = 5;
    options.neighbourhood_rays = 1;
    const Answer answer = classifyAll(classifier, handleScan(scan), options);
    ASSERT_TRUE(std::isnan(own.margin[13]) && std::isnan(own.margin[17]));
    const float calm = std::log(1.0f * 1.0f * 0.25f / 0.125f);
    EXPECT_FLOAT_EQ(own.margin[12], calm);
    for (const std::size_t gate : {11u, 12u, 13u, 14u, 16u, 17u, 18u}) {
        EXPECT_FLOAT_EQ(answer.margin[gate], calm) << gate;
    }
    EXPECT_EQ(answer.margin[15], 0.0f) << "no member";
}

TEST(Deciding, IsTheNeighbourhoodWhereTheGateItselfSaysLess) {
    const Classifier classifier(kMembershipDirectory, CLUTTER_TEXTURES);
    TestScan scan = makeTestScan(30, 60, 4, 0.9);
    clutter_options options = handleOptions();
    options.neighbourhood_gates = options.neighbourhood_rays = 5;
    const Answer answer = classifyAll(classifier, handleScan(scan), options);
    int neighbours = 0;
    for (std::size_t i = 0; i < answer.classes.size(); ++i) {
        if (answer.deciding[i] == CLUTTER_BY_NONE) {
            continue;
        }
        const float sign = answer.classes[i] == CLUTTER_PRECIPITATION ? 1.0f : -1.0f;
        float share = answer.margin[i], most = 0.0f;
        for (int k = 0; k < 4; ++k) {
            share -= answer.contributions[k][i];
            most = std::max(most, sign * answer.contributions[k][i]);
        }
        EXPECT_EQ(answer.deciding[i] == CLUTTER_BY_NEIGHBOURHOOD, sign * share > most) << i;
        neighbours += answer.deciding[i] == CLUTTER_BY_NEIGHBOURHOOD ? 1 : 0;
    }
    EXPECT_GT(neighbours, 0);
}

}  // namespace
