/* The program as its users see it: what it prints, what it writes, how it ends. */
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/uf_bytes.h"
#include "read_scan.h"
#include "run_program.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using clutter::test::TempDir;
using clutter::test::UfField;
using clutter::test::ufFile;
using clutter::test::ufRay;
using clutter::test::UfRecord;

constexpr int kRays = 60, kGates = 240;

enum Truth { kRain, kClutter, kNoiseTruth };

Truth truthAt(int ray, int gate) {
    if (ray >= 10 && ray < 30 && gate >= 60 && gate < 160) return kRain;
    if (ray >= 40 && ray < 50 && gate >= 60 && gate < 160) return kClutter;
    return kNoiseTruth;
}

/* A ray of rain, clutter and noise 30 dB below 0 dBZ at 1 km, in hundredths. */
std::vector<UfField> makeFields(int ray, std::mt19937& random, int gates) {
    std::normal_distribution<double> normal;
    std::uniform_real_distribution<double> uniform;
    std::vector<UfField> fields = {{"DZ", {}}, {"DR", {}}, {"PH", {}}, {"RH", {}}};
    for (int g = 0; g < gates; ++g) {
        const Truth truth = truthAt(ray, g);
        const double noise = -30 + 20 * std::log10(std::max(g, 1) * 0.25) + normal(random);
        const bool rain = truth == kRain;
        const double z = truth == kNoiseTruth ? noise : 35 + (rain ? 1 : 9) * normal(random);
        const double values[] = {
            z, rain ? 1 + 0.2 * normal(random) : 4 * normal(random),
            rain ? 60 + normal(random) : 300 * uniform(random) - 150,
            rain ? 0.99 + 0.002 * normal(random) : 0.4 + 0.6 * uniform(random)};
        for (size_t f = 0; f < fields.size(); ++f)
            fields[f].words.push_back(static_cast<int>(std::lround(100 * values[f])));
    }
    return fields;
}

std::vector<UfRecord> makeRays(int sweep = 1) {
    std::mt19937 random(11);
    std::vector<UfRecord> rays;
    for (int r = 0; r < kRays; ++r) {
        rays.push_back(ufRay(makeFields(r, random, kGates), r + 1));
        rays.back().set(10, sweep).set(33, r * 64 * 360 / kRays);
    }
    return rays;
}

class Program : public ::testing::Test {
  protected:
    void SetUp() override {
        setenv("CLUTTERCLASSIFIER_MEMBERSHIP", MEMBERSHIP_DIRECTORY, 1);
        scan_ = directory_.file("scan.uf");
        clutter::test::writeFile(scan_, ufFile(makeRays()));
    }
    void TearDown() override { unsetenv("CLUTTERCLASSIFIER_MEMBERSHIP"); }

    std::string volume() {
        std::vector<UfRecord> rays = makeRays(1);
        for (const UfRecord& ray : makeRays(2)) rays.push_back(ray);
        const std::string path = directory_.file("volume.uf");
        clutter::test::writeFile(path, ufFile(rays));
        return path;
    }
    std::vector<std::string> filesIn(const std::string& path) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(path))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    TempDir directory_;
    std::string scan_;
};

/* Share of the gates of a truth that have the class which belongs to it. */
double shareRight(const std::vector<float>& classes, Truth truth) {
    const float expected[] = {0, 5, 3};
    int right = 0;
    int all = 0;
    for (int r = 0; r < kRays; ++r) {
        for (int g = 2; g < kGates; ++g) {
            if (truthAt(r, g) != truth) continue;
            ++all;
            right += classes[static_cast<size_t>(r * kGates + g)] == expected[truth];
        }
    }
    return static_cast<double>(right) / all;
}

TEST_F(Program, ClassifiesAScanWithoutAnySetting) {
    const std::string output = directory_.file("classes.plv");
    const Outcome outcome = runProgram("classify " + scan_ + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_NE(outcome.out.find("zhh DZ, zdr DR, pdp PH, rhv RH"), std::string::npos);
    EXPECT_NE(outcome.out.find("no calibration constant in the file: estimated"),
              std::string::npos);
    EXPECT_NE(outcome.out.find("million gates/s"), std::string::npos);
    const scan::Scan classes = scan::readScan(output);
    const scan::Field& field = classes.sweeps.at(0).fields.at(0);
    EXPECT_EQ(field.name, "CCl");
    EXPECT_GT(shareRight(field.values, kRain), 0.97);
    EXPECT_GT(shareRight(field.values, kClutter), 0.9);
    EXPECT_GT(shareRight(field.values, kNoiseTruth), 0.99);
}

TEST_F(Program, UniversalFormatOutputKeepsEveryWordOfTheInput) {
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
        for (int i = 0; i < old.nfields * old.ngates; ++i)
            ASSERT_EQ(now.data[i], old.data[i]) << "ray " << r << " word " << i;
    }
    const scan::Scan classes = scan::readScan(output);
    EXPECT_GT(shareRight(classes.sweeps.at(0).fields.at(4).values, kRain), 0.97);
}

TEST_F(Program, ClassifyingAgainReplacesTheClasses) {
    const std::string first = directory_.file("first.uf");
    const std::string second = directory_.file("second.uf");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + first).code, 0);
    ASSERT_EQ(runProgram("classify -q " + first + " -o " + second).code, 0);
    EXPECT_EQ(clutter::test::readFile(first), clutter::test::readFile(second));
}

TEST_F(Program, AnotherFieldNamedLikeTheClassesIsKept) {
    std::vector<UfRecord> rays;
    std::mt19937 random(1);
    for (int r = 0; r < 4; ++r) {
        std::vector<UfField> fields = makeFields(r, random, 50);
        fields.push_back({"CC", std::vector<int>(50, 97)});
        rays.push_back(ufRay(fields, r + 1));
    }
    clutter::test::writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.uf");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + output).code, 0);
    const scan::Scan scan = scan::readScan(output);
    EXPECT_FLOAT_EQ(scan.sweeps.at(0).fields.at(4).values.at(0), 0.97F);
    EXPECT_EQ(scan.sweeps.at(0).fields.at(5).name, "C1");
}

TEST_F(Program, RaysOfDifferentLengthKeepTheirLength) {
    std::mt19937 random(2);
    std::vector<UfRecord> rays;
    for (int r = 0; r < 8; ++r) rays.push_back(ufRay(makeFields(r, random, 100 - 10 * r), r + 1));
    clutter::test::writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.uf");
    const Outcome outcome = runProgram("classify " + scan_ + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    const scan::Sweep sweep = scan::readScan(output).sweeps.at(0);
    EXPECT_EQ(sweep.rayGates, (std::vector<int>{100, 90, 80, 70, 60, 50, 40, 30}));
    for (int r = 0; r < 8; ++r)
        for (int g = 0; g < 100; ++g)
            EXPECT_EQ(std::isnan(sweep.fields.at(4).values[static_cast<size_t>(r * 100 + g)]),
                      g >= 100 - 10 * r);
}

TEST_F(Program, TheTableHasOneLineAGate) {
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

TEST_F(Program, AFieldRecordBecomesUniversalFormat) {
    scan::Scan input = scan::readScan(scan_);
    const scan::Sweep& sweep = input.sweeps.at(0);
    const char* names[] = {"Zh", "Zdr", "Phidp", "XY"};
    Cpluvek records[4];
    for (size_t f = 0; f < 4; ++f) {
        records[f].nrays = sweep.nrays;
        records[f].ngates = sweep.ngates;
        records[f].coordtype = 0;
        records[f].firstgate = 5;
        records[f].gatesize = 250;
        records[f].colorflag = 255;
        records[f].nrecords = 4;
        std::snprintf(records[f].name, sizeof records[f].name, "%s", names[f]);
        records[f].angles = new float[kRays + 1]();
        for (int r = 0; r < kRays; ++r)
            records[f].angles[1 + r] = static_cast<float>(r * 2 * M_PI / kRays);
        records[f].data = new float[kRays * kGates];
        std::copy(sweep.fields[f].values.begin(), sweep.fields[f].values.end(), records[f].data);
    }
    records[3].data[17] = NAN;
    const std::string path = directory_.file("records.plv");
    const std::string output = directory_.file("records.uf");
    ASSERT_EQ(records[0].WriteDataToFile(path.c_str()), 1);
    const Outcome outcome = runProgram("classify " + path + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    const scan::Sweep result = scan::readScan(output).sweeps.at(0);
    ASSERT_EQ(result.fields.size(), 5u);
    EXPECT_EQ(result.fields[0].name, "DZ");
    EXPECT_EQ(result.fields[3].name, "XY");
    EXPECT_TRUE(std::isnan(result.fields[3].values[17]));
    EXPECT_EQ(result.fields[4].name, "CC");
    EXPECT_DOUBLE_EQ(result.firstGateM, 1250);
    EXPECT_NEAR(result.azimuthDeg[20], 120, 0.02);
    EXPECT_GT(shareRight(result.fields[4].values, kRain), 0.95);
}

TEST_F(Program, SweepsOfAVolumeAreClassifiedOneByOne) {
    const std::string path = volume();
    const std::string base = directory_.path() + "/out/";
    Outcome outcome = runProgram("classify " + path + " -o " + base + " --format csv");
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_NE(outcome.out.find("total: 2 sweeps"), std::string::npos);
    EXPECT_EQ(filesIn(base), (std::vector<std::string>{"volume_sweep1.csv", "volume_sweep2.csv"}));
    EXPECT_EQ(clutter::test::readFile(base + "volume_sweep1.csv"),
              clutter::test::readFile(base + "volume_sweep2.csv"));
    ASSERT_EQ(runProgram("classify -q " + path + " --sweep 2 -o " + base + "one.uf").code, 0);
    const scan::Scan one = scan::readScan(base + "one.uf");
    ASSERT_EQ(one.sweeps.size(), 2u);
    EXPECT_TRUE(std::isnan(one.sweeps[0].fields.at(4).values.at(0)));
    EXPECT_GT(shareRight(one.sweeps[1].fields.at(4).values, kRain), 0.97);
}

TEST_F(Program, OptionsChangeTheResult) {
    const std::string plain = directory_.file("plain.plv");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + plain).code, 0);
    const auto reference = clutter::test::readFile(plain);
    for (const char* option :
         {"--inputs zhh-texture", "--inputs rhv", "--window 3x1", "--min-snr 45",
          "--radar-constant 10", "--map DR=none,PH=none,RH=none"}) {
        const std::string output = directory_.file("other.plv");
        const Outcome outcome = runProgram("classify -q " + scan_ + " -o " + output + " " + option);
        ASSERT_EQ(outcome.code, 0) << option << outcome.out;
        EXPECT_NE(clutter::test::readFile(output), reference) << option;
    }
    const Outcome given = runProgram("classify " + scan_ + " --radar-constant 30 --min-snr 10");
    EXPECT_NE(given.out.find("30.0 dB, as given"), std::string::npos);
    EXPECT_EQ(given.out.find("estimated"), std::string::npos);
}

/* Rays that are no neighbours must not share a window: the last of a sector and the first. */
TEST_F(Program, TheEndsOfASectorDoNotMeet) {
    std::vector<UfRecord> rays;
    for (int r = 0; r < 12; ++r) {
        /* the last three rays are 30 dB stronger: across that border the texture is high */
        rays.push_back(ufRay({{"DZ", std::vector<int>(60, r < 9 ? 2000 + r : 5000 + r)}}, r + 1));
        rays.back().set(33, r * 64);
    }
    clutter::test::writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.plv");
    ASSERT_EQ(runProgram("classify -q " + scan_ + " --radar-constant 60 -o " + output).code, 0);
    const std::vector<float> classes = scan::readScan(output).sweeps.at(0).fields.at(0).values;
    EXPECT_EQ(classes[8 * 60 + 30], 5); /* the border inside the sector is seen */
    EXPECT_EQ(classes[0 * 60 + 30], 0); /* the one round the back is not */
    EXPECT_EQ(classes[11 * 60 + 30], 0);
}

/* A gate without reflectivity is noise at any range, one without another value is judged by the
 * rest: neither may decide a class by itself. */
TEST_F(Program, MissingValuesDecideNothing) {
    using clutter::test::kUfMissing;
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
    clutter::test::writeFile(scan_, ufFile(rays));
    const std::string output = directory_.file("classes.plv");
    const Outcome outcome =
        runProgram("classify " + scan_ + " --map CM=pdf --radar-constant 90 -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_NE(outcome.out.find("; ldr pdf rhv"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("(60 without a reflectivity)"), std::string::npos) << outcome.out;
    const std::vector<float> classes = scan::readScan(output).sweeps.at(0).fields.at(0).values;
    for (int r = 0; r < kRays; ++r) EXPECT_EQ(classes[static_cast<size_t>(r * kGates + 1)], 3);
    /* all noise is echo here, and blurs the edges */
    EXPECT_GT(shareRight(classes, kRain), 0.85);
    EXPECT_GT(shareRight(classes, kClutter), 0.9);
}

TEST_F(Program, InfoShowsWhatAFileHolds) {
    const Outcome outcome = runProgram("info " + scan_);
    ASSERT_EQ(outcome.code, 0);
    for (const char* part : {"Universal Format", "2014-08-10 18:20:05", "PPI   2.0 deg",
                             "full circle", "DZ     zhh  dBZ", "RH     rhv", "two digits"})
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part << "\n" << outcome.out;
}

TEST_F(Program, ErrorsAreOneLineWithFileAndReason) {
    const std::string text = directory_.file("text");
    clutter::test::writeFile(text, {'n', 'o', ' ', 'r', 'a', 'd', 'a', 'r'});
    struct Case {
        std::string arguments;
        int code;
        const char* reason;
    };
    const Case cases[] = {
        {"classify " + directory_.file("absent"), 1, "absent: No such file or directory"},
        {"classify " + text, 1,
         "text: neither a Universal Format, field record, polar data nor German DX file"},
        {"info " + directory_.path(), 1, "is a directory"},
        {"classify " + scan_ + " --membership /nowhere", 1, "/nowhere/cal_mf_sZhh_clutter.dat"},
        {"classify " + scan_ + " --inputs ldr,pdf", 1, "no field for any of the inputs ldr pdf"},
        {"classify " + scan_ + " --map DZ=none", 1, "no reflectivity field"},
        {"classify " + scan_ + " --map QQ=zdr", 1, "no field named QQ"},
        {"classify " + scan_ + " --sweep 7", 1, "has no sweep number 7"},
        {"classify -q " + scan_ + " -o /nowhere/out.uf", 1, "there is no directory /nowhere"},
        {"classify " + scan_ + " -o " + scan_, 2, "would overwrite its input"},
        {"classify " + scan_ + " " + text + " -o out.uf", 2, "must be a directory"},
        {"classify " + scan_ + " --inputs zdr", 2, "no such input: zdr"},
        {"classify " + scan_ + " --window 4x3", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 1x1", 2, "two odd sizes"},
        {"classify " + scan_ + " --map DZ", 2, "FIELD=QUANTITY"},
        {"classify " + scan_ + " --plot a.jpeg", 2, ".png"},
        {"classify " + scan_ + " --min-snr high", 2, "--min-snr"},
        {"classify " + scan_ + " --min-snr nan", 2, "--min-snr"},
        {"classify " + scan_ + " --radar-constant inf", 2, "--radar-constant"},
        {"classify", 2, "INPUT is required"},
        {"frobnicate", 2, "frobnicate"},
        {"", 2, "subcommand"},
    };
    for (const Case& c : cases) {
        const Outcome outcome = runProgram(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << c.arguments << "\n" << outcome.out;
        EXPECT_EQ(outcome.out.find("clutterclassifier: "), 0u) << outcome.out;
        EXPECT_NE(outcome.out.find(c.reason), std::string::npos) << outcome.out;
        EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1) << outcome.out;
    }
}

TEST_F(Program, AMembershipFileWithoutPairsIsToldBeforeTheLibraryMeetsIt) {
    const std::string own = directory_.file("own");
    fs::copy(MEMBERSHIP_DIRECTORY, own, fs::copy_options::recursive);
    clutter::test::writeFile(own + "/cal_mf_sZdr_precipi.dat", {});
    const Outcome outcome = runProgram("classify " + scan_ + " --membership " + own);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.out.find("cal_mf_sZdr_precipi.dat"), std::string::npos);
    EXPECT_EQ(outcome.out.find("Membership function not found"), std::string::npos);
    EXPECT_EQ(runProgram("classify -q --inputs zhh-texture " + scan_ + " --membership " + own).code,
              0);
}

TEST_F(Program, OneBadFileDoesNotStopTheOthers) {
    const std::string bad = directory_.file("bad.uf");
    clutter::test::writeFile(bad, {0, 0, 0, 114, 'U', 'F', 1, 2});
    const std::string out = directory_.path() + "/out/";
    const Outcome outcome = runProgram("classify " + bad + " " + scan_ + " -o " + out);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.out.find("bad.uf: "), std::string::npos);
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"scan.uf"}));
}

TEST_F(Program, NothingHalfWrittenIsLeftBehind) {
    /* A directory stands where the second sweep's file should go. */
    const std::string out = directory_.path() + "/out";
    fs::create_directories(out + "/classes_sweep2.csv");
    const Outcome outcome = runProgram("classify " + volume() + " -o " + out + "/classes.csv");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"classes_sweep2.csv"}));
    /* A full device takes the summary. */
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(runProgram("info " + scan_ + " >/dev/full").code, 1);
    }
}

/* Devices, pipes and links are no files to be replaced. */
TEST_F(Program, OutputTakesThePlaceOfFilesOnly) {
    const std::string pipe = directory_.path() + "/pipe", link = directory_.path() + "/link",
                      file = directory_.path() + "/classes.csv";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(runProgram("classify " + scan_ + " -o " + pipe).code, 1);
    EXPECT_TRUE(fs::is_fifo(pipe));
    clutter::test::writeFile(file, {});
    fs::create_symlink("classes.csv", link + ".csv");
    EXPECT_EQ(runProgram("classify " + scan_ + " -o " + link + ".csv").code, 0);
    EXPECT_TRUE(fs::is_symlink(link + ".csv"));
    EXPECT_GT(fs::file_size(file), 0u);
}

TEST_F(Program, QuietMeansQuietAndPipesSeeNoProgress) {
    EXPECT_EQ(runProgram("classify -q " + scan_).out, "");
    const Outcome outcome = runProgram("classify " + volume());
    EXPECT_EQ(outcome.out.find('\r'), std::string::npos);
    EXPECT_EQ(outcome.out.find('\033'), std::string::npos);
}

TEST_F(Program, VersionAndHelpSucceed) {
    EXPECT_EQ(runProgram("--version").out.find("clutterclassifier "), 0u);
    for (const char* command :
         {"", "classify ", "info ", "plot ", "extract ", "export ", "demo "}) {
        const Outcome outcome = runProgram(std::string(command) + "--help");
        EXPECT_EQ(outcome.code, 0) << command;
        EXPECT_NE(outcome.out.find("Usage"), std::string::npos) << command;
    }
}

TEST_F(Program, MeasuredVolumeIsClassified) {
    const std::string data = clutter::test::measuredDataDir(SOURCE_DIRECTORY);
    if (data.empty()) GTEST_SKIP() << "no measured files";
    const std::string output = directory_.file("classes.uf");
    const std::string input = data + "/npol_20110524_2356_rhi.uf";
    const Outcome outcome = runProgram("classify " + input + " -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_NE(outcome.out.find("RHI 173.0 deg, 194 rays x 999 gates"), std::string::npos);
    const scan::Scan scan = scan::readScan(output);
    ASSERT_EQ(scan.sweeps.size(), 3u);
    EXPECT_NEAR(scan.latitudeDeg, 36.5442, 0.001);
    EXPECT_NEAR(scan.longitudeDeg, -97.1756, 0.001);
}

}  // namespace
