/*
 * Classes of the handle against those of the entry point and of the described operations.
 */
#include <algorithm>
#include <cstring>
#include <thread>

#include "classifier/handle_scan.h"
#include "clutterclassifier/clutterclassifier.h"

namespace {

using namespace clutter::test;
using clutter::Classifier;

std::vector<std::uint8_t> entryPointClasses(TestScan& scan) {
    std::vector<double> out(scan.fields[0].size());
    clutterclassifier(kMembershipDirectory, scan.nrays, scan.ngates, scan.field(0), scan.field(1),
                      scan.field(2), scan.field(3), scan.field(4), scan.field(5), scan.field(6),
                      scan.ranges.data(), scan.azimuths.data(), &scan.elevation, scan.params,
                      out.data());
    return {out.begin(), out.end()};
}

/* Copies of the fields as floats with room between the rays. */
class StridedFloats {
  public:
    StridedFloats(const TestScan& scan, clutter_scan& given) {
        clutter_field* const fields[] = {&given.zhh,       &given.zdr,      &given.phidp,
                                         &given.rhohv,     &given.velocity, &given.ldr,
                                         &given.likelihood};
        const auto gates = static_cast<std::size_t>(scan.ngates);
        for (std::size_t f = 0; f < std::size(fields); ++f) {
            if (scan.fields[f].empty()) {
                continue;
            }
            for (std::size_t i = 0; i < scan.fields[f].size(); ++i) {
                copies_[f].push_back(static_cast<float>(scan.fields[f][i]));
                if ((i + 1) % gates == 0) {
                    copies_[f].insert(copies_[f].end(), 3 + f, 1e30f);
                }
            }
            *fields[f] = {copies_[f].data(), static_cast<std::ptrdiff_t>(gates + 3 + f),
                          CLUTTER_FLOAT};
        }
    }

  private:
    std::vector<float> copies_[7];
};

/* A random choice among the inputs whose fields the scan has. */
unsigned someInputs(const TestScan& scan, std::mt19937& random) {
    const unsigned wanted = static_cast<unsigned>(random());
    unsigned inputs = 0;
    for (int i = 0; i < 8; ++i) {
        const bool given = !scan.fields[i == 7 ? 3 : i].empty();
        if (given && (wanted & 1u << i) != 0) {
            inputs |= 1u << i;
        }
    }
    return inputs != 0 ? inputs : unsigned{CLUTTER_ZHH_TEXTURE};
}

struct Size {
    int rays, gates;
};

class EntryPoint : public testing::TestWithParam<Size> {};

TEST_P(EntryPoint, HasTheClassesOfTheHandle) {
    const auto [rays, gates] = GetParam();
    const Classifier classifier(kMembershipDirectory);
    std::mt19937 random(5);
    for (unsigned round = 0; round < 12; ++round) {
        TestScan scan = makeTestScan(rays, gates, round, 0.1 * round);
        if (round % 2 == 1) {
            addGaps(scan, round);
        }
        if (round % 4 == 2) {
            scan.fields[1 + random() % 6].clear();
        }
        clutter_options options = handleOptions();
        scan.params[2] = 255.0;
        if (round >= 3) {
            options.inputs = someInputs(scan, random);
            scan.params[2] = static_cast<double>(options.inputs);
        }
        const std::vector<std::uint8_t> expected = entryPointClasses(scan);
        clutter_scan given = handleScan(scan);
        EXPECT_EQ(classesOnly(classifier, given, options), expected) << "round " << round;
        EXPECT_EQ(classifyAll(classifier, given, options).classes, expected) << "round " << round;
        const StridedFloats floats(scan, given);
        EXPECT_EQ(classesOnly(classifier, given, options), expected) << "floats, round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, EntryPoint,
                         testing::Values(Size{1, 1}, Size{1, 7}, Size{2, 5}, Size{5, 33},
                                         Size{40, 300}));

TEST(AllClutter, HasTheClassesOfTheDescribedOperation) {
    const Classifier classifier(kMembershipDirectory, 0, CLUTTER_WITH_ALL_CLUTTER);
    TestScan scan = makeTestScan(20, 200, 3);
    addGaps(scan, 4);
    for (std::size_t i = 0; i < scan.fields[4].size(); i += 3) {
        scan.fields[4][i] *= 30.0;
    }
    const auto n = scan.fields[0].size();
    std::vector<float> fields[7], textures[4];
    std::vector<float> noise;
    for (const std::uint8_t cls : entryPointClasses(scan)) {
        noise.push_back(cls == 3 ? 3.0f : 0.0f);
    }
    for (int f = 0; f < 7; ++f) {
        fields[f].assign(scan.fields[f].begin(), scan.fields[f].end());
    }
    for (int f = 0; f < 4; ++f) {
        textures[f].resize(n);
        CDSP().GetNxNPointStdWithMask(fields[f].data(), noise.data(), scan.ngates, scan.nrays,
                                      textures[f].data(), 5, 3);
    }
    std::string directory = kMembershipDirectory;
    std::vector<float> codes(n);
    ASSERT_EQ(Cradarpro().PrecipitationAllClutterClassification(
                  directory.data(), textures[0].data(), textures[1].data(), textures[2].data(),
                  textures[3].data(), fields[4].data(), fields[5].data(), fields[6].data(),
                  fields[3].data(), nullptr, codes.data(), static_cast<int>(n), nullptr, 1),
              1);
    constexpr std::uint8_t kCodes[] = {CLUTTER_GROUND, CLUTTER_PRECIPITATION, CLUTTER_SEA,
                                       CLUTTER_TURBINE};
    std::vector<std::uint8_t> expected;
    for (std::size_t i = 0; i < n; ++i) {
        const int code = static_cast<int>(codes[i]);
        expected.push_back(noise[i] == 3.0f ? std::uint8_t{CLUTTER_NOISE}
                           : code < 0       ? std::uint8_t{CLUTTER_PRECIPITATION}
                                            : kCodes[code]);
    }
    clutter_options options = handleOptions();
    options.all_clutter = 1;
    const Answer answer = classifyAll(classifier, handleScan(scan), options);
    EXPECT_EQ(answer.classes, expected);
    for (const std::uint8_t code : kCodes) {
        EXPECT_GT(std::count(expected.begin(), expected.end(), code), 0) << int{code};
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (expected[i] == CLUTTER_NOISE || answer.margin[i] == 0.0f) {
            continue;
        }
        EXPECT_EQ(answer.margin[i] > 0.0f, expected[i] == CLUTTER_PRECIPITATION) << i;
    }
}

/* Noise follows from the reflectivity, a ratio or a mask. */
TEST(Noise, ComesFromTheRatioOrTheMask) {
    const Classifier classifier(kMembershipDirectory);
    TestScan scan = makeTestScan(6, 90, 1);
    const clutter_scan byReflectivity = handleScan(scan);
    const std::vector<std::uint8_t> expected = classesOnly(classifier, byReflectivity);
    std::vector<float> snr;
    std::vector<std::uint8_t> mask;
    for (const std::uint8_t cls : expected) {
        snr.push_back(cls == CLUTTER_NOISE ? 9.99f : 10.0f);
        mask.push_back(cls == CLUTTER_NOISE ? 200 : 0);
    }
    clutter_scan byRatio = byReflectivity;
    byRatio.snr = {snr.data(), 0, CLUTTER_FLOAT};
    byRatio.min_snr_db = 10.0;
    EXPECT_EQ(classesOnly(classifier, byRatio), expected);
    clutter_scan byMask = byRatio;
    byMask.noise = mask.data();
    byMask.min_snr_db = 99.0;
    EXPECT_EQ(classesOnly(classifier, byMask), expected);
}

/* In a sector the first ray's windows do not reach the last. */
TEST(Sector, EndsAreApart) {
    const Classifier classifier(kMembershipDirectory, CLUTTER_ZHH_TEXTURE);
    for (const int window : {3, 5, 7}) {
        TestScan scan = makeTestScan(7, 40, 2);
        scan.params[1] = -200.0;
        for (std::size_t i = 0; i < scan.fields[0].size(); ++i) {
            scan.fields[0][i] = i >= 6 * 40 ? static_cast<double>(i * i % 97) : 30.0;
        }
        clutter_options options = handleOptions();
        options.texture_gates = 5;
        options.texture_rays = window;
        EXPECT_EQ(classesOnly(classifier, handleScan(scan), options)[20], CLUTTER_GROUND);
        options.sector = 1;
        const Answer apart = classifyAll(classifier, handleScan(scan), options);
        EXPECT_EQ(apart.classes[20], CLUTTER_PRECIPITATION) << window;
        EXPECT_EQ(apart.classes[6 * 40 + 20], CLUTTER_GROUND) << window;
        options.neighbourhood_gates = 1;
        options.neighbourhood_rays = 7;
        options.texture_rays = 1;
        options.sector = 0;
        const float near = classifyAll(classifier, handleScan(scan), options).margin[40 + 20];
        options.sector = 1;
        const float far = classifyAll(classifier, handleScan(scan), options).margin[40 + 20];
        EXPECT_GT(far, near) << "rays 0 to 4, without ray 6";
    }
}

TEST(NotMeasured, GatesHaveAClassOfTheirOwnAndStayOutOfWindows) {
    const Classifier classifier(kMembershipDirectory);
    TestScan scan = makeTestScan(9, 60, 8, 1.0);
    TestScan gaps = scan;
    for (const std::size_t i : {0u, 130u, 299u}) {
        gaps.fields[0][i] = kNan;
    }
    gaps.fields[6][200] = kNan;
    gaps.fields[4][200] = kNan;
    clutter_options options = handleOptions();
    EXPECT_EQ(classesOnly(classifier, handleScan(gaps), options)[200], CLUTTER_GROUND)
        << "a missing likelihood, as the entry point has it";
    options.nan_is_not_measured = 1;
    const Answer whole = classifyAll(classifier, handleScan(scan), options);
    const Answer answer = classifyAll(classifier, handleScan(gaps), options);
    for (std::size_t i = 0; i < answer.classes.size(); ++i) {
        const bool missing = i == 0 || i == 130 || i == 299;
        EXPECT_EQ(answer.classes[i] == CLUTTER_NOT_MEASURED, missing) << i;
        EXPECT_EQ(std::isnan(answer.margin[i]), missing || answer.classes[i] == CLUTTER_NOISE) << i;
    }
    EXPECT_EQ(answer.contributions[4][200], 0.0f);
    EXPECT_EQ(answer.contributions[6][200], 0.0f);
    EXPECT_EQ(answer.contributions[5][200], whole.contributions[5][200]);
    clutter_scan onlyVelocity = handleScan(gaps);
    std::vector<std::uint8_t> mask(scan.fields[0].size(), 0);
    onlyVelocity.noise = mask.data();
    onlyVelocity.zhh = onlyVelocity.zdr = onlyVelocity.phidp = onlyVelocity.rhohv =
        onlyVelocity.ldr = onlyVelocity.likelihood = {};
    const auto classes = classesOnly(classifier, onlyVelocity, options);
    EXPECT_EQ(std::count(classes.begin(), classes.end(), CLUTTER_NOT_MEASURED), 1);
}

TEST(Handle, EightThreadsHaveTheBitsOfOne) {
    const Classifier classifier(kMembershipDirectory);
    TestScan scan = makeTestScan(24, 150, 6);
    const clutter_scan given = handleScan(scan);
    clutter_options options = handleOptions();
    options.neighbourhood_gates = 5;
    options.neighbourhood_rays = 3;
    const Answer expected = classifyAll(classifier, given, options);
    const auto plain = classesOnly(classifier, given);
    std::vector<std::thread> threads;
    std::vector<Answer> answers(8, Answer(given));
    std::vector<std::vector<std::uint8_t>> classes(8);
    for (std::size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            answers[t] = classifyAll(classifier, given, options);
            classes[t] = classesOnly(classifier, given);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (std::size_t t = 0; t < 8; ++t) {
        EXPECT_EQ(answers[t].classes, expected.classes);
        EXPECT_EQ(classes[t], plain);
        EXPECT_EQ(std::memcmp(answers[t].margin.data(), expected.margin.data(),
                              4 * expected.margin.size()),
                  0);
    }
}

}  // namespace
