/* The command classify: classes of scans whose truth is known, and what it writes. */
#include <gmock/gmock.h>
#include <cmath>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "program_scan.h"
#include "run_program.h"
#include "scan/classes/classify_sweep.h"
#include "scan/formats/read_scan.h"

namespace {

using testing::HasSubstr, testing::Not;

namespace fs = std::filesystem;
using namespace clutter::test;
using Classify = ProgramOnAScan;

/* Share of the gates of a truth that have the class which belongs to it. */
double shareRight(const std::vector<float>& classes, Truth truth) {
    const float expected[] = {0, 5, 3};
    int right = 0;
    int all = 0;
    for (int r = 0; r < kRays; ++r) {
        for (int g = 2; g < kGates; ++g) {
            if (truthAt(r, g) != truth) {
                continue;
            }
            ++all;
            right += classes[static_cast<size_t>(r * kGates + g)] == expected[truth];
        }
    }
    return static_cast<double>(right) / all;
}

TEST_F(Classify, ClassifiesAScanWithoutAnySetting) {
    const std::string output = directory_.file("classes.plv");
    const Outcome outcome = runProgram("classify " + scan_ + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("zhh DZ, zdr DR, pdp PH, rhv RH"));
    EXPECT_THAT(outcome.out, HasSubstr("estimated: constant "));
    EXPECT_THAT(outcome.out, HasSubstr("million gates/s"));
    const scan::Scan classes = scan::readScan(output);
    const scan::Field& field = classes.sweeps.at(0).fields.at(0);
    EXPECT_EQ(field.name, "CCl");
    EXPECT_GT(shareRight(field.values, kRain), 0.97);
    EXPECT_GT(shareRight(field.values, kClutter), 0.9);
    EXPECT_GT(shareRight(field.values, kNoiseTruth), 0.99);
}

TEST_F(Classify, UniversalFormatOutputKeepsEveryWordOfTheInput) {
    std::string output = directory_.file("classes.uf");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + output).code, 0);
    Cufrw before;
    Cufrw after;
    ASSERT_EQ(before.readfile(scan_.data()), 1);
    ASSERT_EQ(after.readfile(output.data()), 1);
    ASSERT_EQ(after.nrays, before.nrays);
    for (int r = 0; r < before.nrays; ++r) {
        const Cufray& old = before.rays[r];
        const Cufray& now = after.rays[r];
        ASSERT_EQ(now.nfields, old.nfields + 1);
        ASSERT_EQ(std::string(now.table[old.nfields].name), "CC");
        EXPECT_EQ(now.latitudeseconds, old.latitudeseconds);
        EXPECT_EQ(now.azimuth, old.azimuth);
        EXPECT_EQ(now.headers[2].firstgaterange, old.headers[2].firstgaterange);
        for (int i = 0; i < old.nfields * old.ngates; ++i) {
            ASSERT_EQ(now.data[i], old.data[i]) << "ray " << r << " word " << i;
        }
    }
    const scan::Scan classes = scan::readScan(output);
    EXPECT_GT(shareRight(classes.sweeps.at(0).fields.at(4).values, kRain), 0.97);
}

TEST_F(Classify, ClassifyingAgainReplacesTheClasses) {
    const std::string first = directory_.file("first.uf");
    const std::string second = directory_.file("second.uf");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + first).code, 0);
    ASSERT_EQ(runProgram("classify -q " + first + " -o " + second).code, 0);
    EXPECT_EQ(readFile(first), readFile(second));
}

TEST_F(Classify, AnotherFieldNamedLikeTheClassesIsKept) {
    std::vector<UfRecord> rays;
    std::mt19937 random(1);
    for (int r = 0; r < 4; ++r) {
        std::vector<UfField> fields = makeFields(r, random, 50);
        fields.push_back({"CC", std::vector<int>(50, 97)});
        rays.push_back(ufRay(fields, r + 1));
    }
    writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.uf");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + output).code, 0);
    const scan::Scan scan = scan::readScan(output);
    EXPECT_FLOAT_EQ(scan.sweeps.at(0).fields.at(4).values.at(0), 0.97F);
    EXPECT_EQ(scan.sweeps.at(0).fields.at(5).name, "C1");
}

TEST_F(Classify, RaysOfDifferentLengthKeepTheirLength) {
    std::mt19937 random(2);
    std::vector<UfRecord> rays;
    for (int r = 0; r < 8; ++r) {
        rays.push_back(ufRay(makeFields(r, random, 100 - 10 * r), r + 1));
    }
    writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.uf");
    const Outcome outcome = runProgram("classify " + scan_ + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    const scan::Sweep sweep = scan::readScan(output).sweeps.at(0);
    EXPECT_EQ(sweep.rayGates, (std::vector<int>{100, 90, 80, 70, 60, 50, 40, 30}));
    for (int r = 0; r < 8; ++r) {
        for (int g = 0; g < 100; ++g) {
            EXPECT_EQ(std::isnan(sweep.fields.at(4).values[static_cast<size_t>(r * 100 + g)]),
                      g >= 100 - 10 * r);
        }
    }
}

TEST_F(Classify, TheTableHasOneLineAGate) {
    const std::string output = directory_.file("classes.csv");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + output).code, 0);
    std::ifstream table(output);
    std::string line;
    ASSERT_TRUE(std::getline(table, line));
    EXPECT_EQ(line.substr(0, 26), "range/angle,0.0,6.0,12.0,1");
    int lines = 0;
    while (std::getline(table, line)) {
        ASSERT_EQ(std::count(line.begin(), line.end(), ','), kRays + 1);
        if (lines == 100) {
            EXPECT_EQ(line.substr(0, 6), "25.00,");
        }
        ++lines;
    }
    EXPECT_EQ(lines, kGates);
}

/* Angles halfway between two tenths of a degree, and rays that end early, are the same text too. */
TEST_F(Classify, TheTableIsThatOfExport) {
    constexpr size_t kAzimuth = 33, kElevation = 34, kMode = 35;
    for (const size_t moving : {kAzimuth, kElevation}) {
        std::vector<UfRecord> rays;
        std::mt19937 random(3);
        for (int r = 0; r < 40; ++r) {
            rays.push_back(ufRay(makeFields(r, random, 60 - r), r + 1));
            rays.back().set(kAzimuth, 0).set(moving, 16 * (2 * r + 1));
            if (moving == kElevation) {
                rays.back().set(kMode, 3);
            }
        }
        writeFile(scan_, ufFile(rays));
        const std::string classes = directory_.file("classes.uf"), table = directory_.file("c.csv"),
                          exported = directory_.file("e.csv");
        ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + classes).code, 0);
        ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + table).code, 0);
        ASSERT_EQ(runProgram("export " + classes + " --field CC -o " + exported).code, 0);
        EXPECT_EQ(readFile(table), readFile(exported));
        EXPECT_GT(readFile(table).size(), 5000u);
    }
}

/* A record counts the first gate in spacings. */
TEST_F(Classify, AFieldRecordBecomesUniversalFormat) {
    std::vector<UfRecord> rays = makeRays();
    constexpr size_t kHeader = 71;
    for (UfRecord& ray : rays) {
        ray.set(kHeader + 2, 1).set(kHeader + 3, 250);
    }
    rays[0].set(rays[0].at(kHeader + 25 * 3) + 17, kUfMissing);
    writeFile(scan_, ufFile(rays));
    const std::string path = directory_.file("records.plv"), output = directory_.file("records.uf");
    ASSERT_EQ(runProgram("convert " + scan_ + " " + path).code, 0);
    const Outcome outcome = runProgram("classify " + path + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    const scan::Sweep result = scan::readScan(output).sweeps.at(0);
    ASSERT_EQ(result.fields.size(), 5u);
    EXPECT_EQ(result.fields[0].name, "DZ");
    EXPECT_TRUE(std::isnan(result.fields[3].values[17]));
    EXPECT_EQ(result.fields[4].name, "CC");
    EXPECT_DOUBLE_EQ(result.firstGateM, 1250);
    EXPECT_NEAR(result.azimuthDeg[20], 120, 0.02);
    EXPECT_GT(shareRight(result.fields[4].values, kRain), 0.95);
}

TEST_F(Classify, SweepsOfAVolumeAreClassifiedOneByOne) {
    const std::string path = volume();
    const std::string base = directory_.path() + "/out/";
    Outcome outcome = runProgram("classify " + path + " -o " + base + " --format csv");
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("total: 2 sweeps"));
    EXPECT_EQ(filesIn(base), (std::vector<std::string>{"volume_sweep1.csv", "volume_sweep2.csv"}));
    EXPECT_EQ(readFile(base + "volume_sweep1.csv"), readFile(base + "volume_sweep2.csv"));
    ASSERT_EQ(runProgram("classify -q " + path + " --sweep 2 -o " + base + "one.uf").code, 0);
    const scan::Scan one = scan::readScan(base + "one.uf");
    ASSERT_EQ(one.sweeps.size(), 2u);
    EXPECT_TRUE(std::isnan(one.sweeps[0].fields.at(4).values.at(0)));
    EXPECT_GT(shareRight(one.sweeps[1].fields.at(4).values, kRain), 0.97);
}

TEST_F(Classify, OptionsChangeTheResult) {
    const std::string plain = directory_.file("plain.plv");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + plain).code, 0);
    const auto reference = readFile(plain);
    for (const char* option :
         {"--inputs rhv", "--window 3x1", "--min-snr 45", "--radar-constant 10"}) {
        const std::string output = directory_.file("other.plv");
        const Outcome outcome = runProgram("classify -q " + scan_ + " -o " + output + " " + option);
        ASSERT_EQ(outcome.code, 0) << option << outcome.out;
        EXPECT_NE(readFile(output), reference) << option;
    }
    const Outcome given = runProgram("classify " + scan_ + " --radar-constant 30 --min-snr 10");
    for (const char* option : {"--inputs zhh-texture", "--map DR=none,PH=none,RH=none"}) {
        EXPECT_THAT(runProgram("classify " + scan_ + " " + option).out,
                    HasSubstr("inputs       textures of zhh\n"));
    }
    EXPECT_THAT(given.out, HasSubstr("30.0 dB, as given"));
    EXPECT_THAT(given.out, Not(HasSubstr("estimated")));
}

/* Rays that are no neighbours must not share a window: the last of a sector and the first. */
TEST_F(Classify, TheEndsOfASectorDoNotMeet) {
    std::vector<UfRecord> rays;
    for (int r = 0; r < 12; ++r) {
        /* the last three rays are 30 dB stronger: across that border the texture is high */
        rays.push_back(ufRay({{"DZ", std::vector<int>(60, r < 9 ? 2000 + r : 5000 + r)}}, r + 1));
        rays.back().set(33, r * 64);
    }
    writeFile(scan_, ufFile(rays));
    const scan::Scan sector = scan::readScan(scan_);
    scan::ClassifyOptions options;
    options.membership = kMembershipDirectory;
    options.noise.radarConstantDb = 60;
    options.neighbourhood = {};
    const std::vector<float> classes =
        scan::classifySweep(sector, sector.sweeps.at(0), options).classes;
    EXPECT_EQ(classes[8 * 60 + 30], 5);  // the border inside the sector is seen
    EXPECT_EQ(classes[0 * 60 + 30], 0);  // the one round the back is not
    EXPECT_EQ(classes[11 * 60 + 30], 0);
}

/* A gate without reflectivity is noise at any range, one without another value is judged by the
 * rest: neither may decide a class by itself. */
TEST_F(Classify, MissingValuesDecideNothing) {
    std::mt19937 random(5);
    std::vector<UfRecord> rays;
    for (int r = 0; r < kRays; ++r) {
        std::vector<UfField> fields = makeFields(r, random, kGates);
        fields[0].words[1] = kUfMissing;
        fields.push_back({"CM", std::vector<int>(kGates, kUfMissing)});
        fields.push_back({"LD", std::vector<int>(kGates, kUfMissing)});
        fields[4].words[0] = fields[5].words[0] = 50;
        fields[4].words[2] = fields[5].words[2] = 51;
        rays.push_back(ufRay(fields, r + 1));
        rays.back().set(33, r * 64 * 360 / kRays);
    }
    writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.plv");
    const Outcome outcome =
        runProgram("classify " + scan_ + " --map CM=pdf --radar-constant 90 -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("; ldr pdf rhv"));
    EXPECT_THAT(outcome.out, HasSubstr("(60 without a reflectivity)"));
    const std::vector<float> classes = scan::readScan(output).sweeps.at(0).fields.at(0).values;
    for (int r = 0; r < kRays; ++r) {
        EXPECT_EQ(classes[static_cast<size_t>(r * kGates + 1)], 3);
    }
    /* all noise is echo here, and blurs the edges */
    EXPECT_GT(shareRight(classes, kRain), 0.85);
    EXPECT_GT(shareRight(classes, kClutter), 0.9);
}

TEST_F(Classify, MeasuredVolumeIsClassified) {
    const std::string data = measuredDataDir();
    if (data.empty()) {
        GTEST_SKIP() << "no measured files";
    }
    const std::string output = directory_.file("classes.uf");
    const std::string input = data + "/npol_20110524_2356_rhi.uf";
    const Outcome outcome = runProgram("classify " + input + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("RHI 173.0 deg, 194 rays x 999 gates"));
    const scan::Scan scan = scan::readScan(output);
    ASSERT_EQ(scan.sweeps.size(), 3u);
    EXPECT_NEAR(scan.latitudeDeg, 36.5442, 0.001);
    EXPECT_NEAR(scan.longitudeDeg, -97.1756, 0.001);
}

}  // namespace
