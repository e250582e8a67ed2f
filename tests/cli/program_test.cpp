/* The program as its users see it: what it prints, how it ends, what it leaves behind. */
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "program_scan.h"
#include "report/failure.h"
#include "run_program.h"
#include "scan/formats/read_scan.h"
#include "scan/synthetic/synthetic.h"
#include "support/directories.h"

namespace {

using testing::HasSubstr, testing::Not, testing::StartsWith;

namespace fs = std::filesystem;
using namespace clutter::test;
using Program = ProgramOnAScan;

/* A circle of 36 rays whose reflectivity is the ray's number, then a range-height sweep of three.
 */
ByteVector twoSweeps() {
    constexpr std::size_t kSweep = 10, kAzimuth = 33, kElevation = 34, kMode = 35, kHeader = 69;
    std::vector<UfRecord> rays;
    for (int r = 0; r < 39; ++r) {
        const bool rhi = r >= 36;
        UfField z{"DZ", {100 * r, kUfMissing, 100 * r, 100 * r}}, ones{"SW", {100, 100, 100, 100}};
        UfField v{"VR", std::vector<int>(4, kUfMissing)};
        if (r == 37) {
            for (UfField* field : {&z, &ones, &v}) {
                field->words.resize(3);
            }
        }
        rays.push_back(ufRay({z, ones, v}, r + 1));
        UfRecord& ray =
            rays.back().set(kSweep, rhi ? 2 : 1).set(kAzimuth, rhi ? 64 * 200 : 640 * r);
        ray.text(11, "RADAR   ")
            .text(15, "SITE    ")
            .set(19, -50)
            .set(20, 0)
            .set(21, 0)
            .set(25, 99);
        ray.set(kElevation, rhi ? 64 * (r - 35) : 32).set(kMode, rhi ? 3 : 1);
        ray.set(kHeader + 2, 1).set(kHeader + 3, 500).set(kHeader + 7, 70).set(kHeader + 11, 340);
    }
    return ufFile(rays);
}

TEST_F(Program, InfoShowsWhatAFileHolds) {
    const std::string path = directory_.file("two.uf");
    writeFile(path, twoSweeps());
    const Outcome outcome = runProgram("info " + path);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_THAT(outcome.out, StartsWith(path + R"(
  format       Universal Format
  radar        RADAR, SITE, wavelength 5.3 cm, beam 1.09 deg
  site         50.0000 S, 7.2501 E, 99 m
  time         2014-08-10 18:20:05
  calibration  no constant in the file (estimated by classify)

  sweep mode    fixed   rays  gates   spacing first gate   Nyquist  covers
  1     PPI   0.0 deg     36      4     250 m     1500 m         -  full circle
  2     RHI  200.0 deg      3      4     250 m     1500 m         -  el 1.0..3.0

  field  role units      lowest    median   highest   present
  DZ     zhh  dBZ          0.00     19.00     38.00    74.8 %  horizontal reflectivity
  SW     wid  m/s          1.00      1.00      1.00   100.0 %  spectrum width
  VR     vel  m/s             -         -         -     0.0 %  Doppler velocity

  Worth knowing:
  - The year has two digits: 14, read as 2014.
)"));
}

/* The table counts every gate under its truth; the scan comes back as it was made. */
TEST_F(Program, TheDemoFindsTheClutterThatItHides) {
    const std::string file = directory_.file("demo.uf");
    const Outcome outcome = runProgram("demo --seed 5 --width 720 -o " +
                                       directory_.file("demo.png") + " --scan " + file);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    const scan::SyntheticScan made = scan::makeSyntheticScan(5);
    std::istringstream words(outcome.out);
    std::vector<double> skills;
    std::map<std::string, std::array<long, 3>> rows;
    for (std::string word; words >> word;) {
        if (word == "HSS") {
            words >> skills.emplace_back();
        }
        if (word != "precipitation" && word != "clutter" && word != "noise") {
            continue;
        }
        std::array<long, 3> row{};
        if (words >> row[0] >> row[1] >> row[2]) {
            rows[word] = row;
        }
        words.clear();
    }
    ASSERT_EQ(skills.size(), 2u) << outcome.out;
    EXPECT_TRUE(skills[0] > 0.9 && skills[0] < 0.99) << outcome.out;
    EXPECT_TRUE(skills[1] > 0.8 && skills[1] < skills[0]) << outcome.out;
    for (const auto& [name, code, most] :
         {std::tuple{"precipitation", 0.0f, 0}, {"clutter", 5.0f, 1}, {"noise", 3.0f, 2}}) {
        const std::array<long, 3>& row = rows[name];
        EXPECT_EQ(row[0] + row[1] + row[2], std::count(made.truth.begin(), made.truth.end(), code))
            << outcome.out;
        EXPECT_EQ(*std::max_element(row.begin(), row.end()), row[most]) << name;
    }
    char scores[80];
    const double found = rows["clutter"][1], lost = rows["precipitation"][1];
    std::snprintf(scores, sizeof scores, "POD %.3f ",
                  found / std::count(made.truth.begin(), made.truth.end(), 5.0f));
    EXPECT_THAT(outcome.out, HasSubstr(scores));
    std::snprintf(scores, sizeof scores, "precipitation kept %.1f %%",
                  100 - 100 * lost / std::count(made.truth.begin(), made.truth.end(), 0.0f));
    EXPECT_THAT(outcome.out, HasSubstr(scores));

    const scan::Scan read = scan::readScan(file);
    const scan::Sweep& sweep = read.sweeps.at(0);
    EXPECT_EQ(read.radarName, "DEMO");
    EXPECT_EQ(sweep.firstGateM, made.rangeM[0]);
    EXPECT_EQ(sweep.gateSpacingM, made.gateSpacingM);
    EXPECT_NEAR(sweep.azimuthDeg.at(77), made.azimuthDeg[77], 0.01);
    const std::tuple<const char*, const std::vector<double>*, double> fields[] = {
        {"DZ", &made.zhh, 0.006},     {"DR", &made.zdr, 0.006},      {"PH", &made.phidp, 0.011},
        {"RH", &made.rhohv, 0.00006}, {"VR", &made.velocity, 0.006}, {"SW", &made.width, 0.006},
        {"LD", &made.ldr, 0.006},
    };
    for (std::size_t f = 0; f < std::size(fields); ++f) {
        const auto& [name, values, tolerance] = fields[f];
        EXPECT_EQ(sweep.fields.at(f).name, name);
        double worst = 0;
        for (std::size_t i = 0; i < values->size(); ++i) {
            const double difference = std::abs(sweep.fields[f].values[i] - (*values)[i]);
            const bool missing = std::isnan((*values)[i]);
            ASSERT_EQ(std::isnan(difference), missing) << name << " " << i;
            if (!missing) {
                worst = std::max(worst, difference);
            }
        }
        EXPECT_LT(worst, tolerance) << name;
    }
}

TEST_F(Program, ErrorsAreOneLineWithFileAndReason) {
    const std::string text = directory_.file("text");
    writeFile(text, {'n', 'o', ' ', 'r', 'a', 'd', 'a', 'r'});
    expectRefusals({
        {"classify " + directory_.file("absent"), 1, "absent: No such file or directory"},
        {"classify " + text, 1, "text: is of no known format"},
        {"plot " + directory_.path() + " -o a.png", 1, "is a directory"},
        {"classify " + scan_ + " --membership /nowhere", 1, "/nowhere/: No such file or directory"},
        {"classify " + scan_ + " --inputs ldr,pdf", 1, "no field for any of the inputs ldr pdf"},
        {"classify " + scan_ + " --map DZ=none", 1, "no reflectivity field"},
        {"classify " + scan_ + " --map QQ=zdr", 1, "no field named QQ"},
        {"classify " + scan_ + " --sweep 7", 1, "has no sweep number 7"},
        {"classify -q " + scan_ + " -o /nowhere/out.uf", 1, "there is no directory /nowhere"},
        {"classify " + scan_ + " -o " + scan_, 2, "would overwrite "},
        {"classify " + scan_ + " " + text + " -o out.uf", 2, "must be a directory"},
        {"classify " + scan_ + " --inputs zdr", 2, "no such input: zdr"},
        {"classify " + scan_ + " --window 4x3", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 1x1", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 5", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 5x", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 5x3x", 2, "two odd sizes"},
        {"classify " + scan_ + " --window 1001x3", 2, "two odd sizes up to 999"},
        {"classify " + scan_ + " --window 4294967297x3", 2, "two odd sizes up to 999"},
        {"classify " + scan_ + " --map DZ=none,DZ=zhh", 2, "DZ is mapped twice"},
        {"classify " + scan_ + " --format csv", 2, "--format"},
        {"classify " + scan_ + " -o x.uf --format csv", 2, "--format"},
        {"classify " + scan_ + " -o x.pol", 2, "a .pol file cannot be written here"},
        {"classify " + scan_ + " --layout 252", 2, "--layout"},
        {"info " + scan_ + " --layout 252", 2, "--layout"},
        {"plot " + scan_ + " -o x.png --layout 252", 2, "--layout"},
        {"plot " + scan_ + " -o x.png --max-range nan", 2, "nan is not a finite number"},
        {"plot " + scan_ + " -o x.png --max-range 1e300", 2, "too large for single precision"},
        {"plot " + scan_ + " -o x.png --max-range 0", 2, "--max-range"},
        {"plot " + scan_ + " -o x.png --vmin nan", 2, "nan is not a finite number"},
        {"plot " + scan_ + " -o x.png --vmax inf", 2, "inf is not a finite number"},
        {"demo --seed -1", 2, "-1 is not a whole number"},
        {"demo --seed 18446744073709551616", 2, "is not a whole number"},
        {"demo --scan x.plv", 2, "--scan: must end in .uf"},
        {"classify " + scan_ + " --map DZ", 2, "FIELD=ROLE"},
        {"classify " + scan_ + " --plot a.jpeg", 2, ".png"},
        {"classify " + scan_ + " --min-snr high", 2, "--min-snr"},
        {"classify " + scan_ + " --min-snr nan", 2, "--min-snr: nan is not a finite number"},
        {"classify " + scan_ + " --min-snr 1e300", 2, "1e300 is too large for single precision"},
        {"classify " + scan_ + " --radar-constant inf", 2, "--radar-constant"},
        {"classify", 2, "INPUT is required"},
        {"frobnicate", 2, "frobnicate"},
        {"", 2, "subcommand"},
    });
}

TEST_F(Program, AMembershipFileWithoutPairsIsReportedBeforeTheLibraryMeetsIt) {
    const std::string own = directory_.file("own");
    fs::copy(kMembershipDirectory, own, fs::copy_options::recursive);
    writeFile(own + "/cal_mf_sZdr_precipi.dat", {});
    const Outcome outcome = runProgram("classify " + scan_ + " --membership " + own);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.out, HasSubstr("cal_mf_sZdr_precipi.dat"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("Membership function not found")));
    EXPECT_EQ(runProgram("classify -q --inputs zhh-texture " + scan_ + " --membership " + own).code,
              0);
}

/* Where results are data, or are not printed, it is said beside them: with the file's name. */
TEST_F(Program, EveryCommandSaysThatAFileIsCut) {
    const std::string cut = directory_.file("cut.uf"), list = directory_.file("points.txt");
    const ByteVector bytes = readFile(scan_);
    ASSERT_GT(bytes.size(), 100u);
    writeFile(cut, {bytes.begin(), bytes.end() - 100});
    writeFile(list, {'3', '0', '0', '0', ' ', '5', '\n'});
    const std::string picture = directory_.file("x.png"), table = directory_.file("x.csv");
    const struct {
        std::string arguments;
        const char* begin;
    } kCases[] = {
        {"classify " + cut, "  note: "},
        {"classify -q " + cut + " 2>&1 >/dev/null #", "cut.uf: "},
        {"process --what 1 " + cut, "  note: "},
        {"process --what 1 -q " + cut + " 2>&1 >/dev/null #", "cut.uf: "},
        {"convert " + cut + " " + directory_.file("y.uf"), "  note: "},
        {"plot " + cut + " -o " + picture + " 2>&1 >/dev/null #", "cut.uf: "},
        {"export " + cut + " -o " + table + " 2>&1 >/dev/null #", "cut.uf: "},
        {"extract " + cut + " " + list + " 2>&1 >/dev/null #", "cut.uf: "},
        {"info " + cut, "  Damaged:\n  - "},
    };
    const std::string last = std::to_string(bytes.size() / 60 - 100);  // of 60 rays
    for (const auto& row : kCases) {
        const Outcome outcome = runProgram(row.arguments);
        EXPECT_EQ(outcome.code, 0) << row.arguments;
        EXPECT_THAT(outcome.out, HasSubstr(row.begin + last + " bytes after the last whole record"))
            << row.arguments;
    }
}

/* Names of fields and files may hold what a terminal obeys: no command passes it on. */
TEST_F(Program, ControlCharactersOfNamesStayOffTheTerminal) {
    std::vector<UfRecord> rays = makeRays();
    for (UfRecord& ray : rays) {
        ray.text(69, "\x1b\x9b");
    }
    const std::string path = directory_.file("a\x1b[31m\xc2\x9b\xff \xc3\xa9.uf");
    const std::string list = directory_.file("points.txt"), quoted = "'" + path + "'";
    writeFile(path, ufFile(rays));
    writeFile(list, {'3', '0', '0', '0', ' ', '5', '\n'});
    for (const std::string& arguments :
         {"info " + quoted, "info " + quoted + "x", "classify -o " + quoted + ".uf " + quoted,
          "classify --map QQ=zdr " + quoted, "process --what 1 " + quoted,
          "extract " + quoted + " " + list, "plot --field QQ -o x.svg " + quoted,
          "export --field QQ -o x.csv " + quoted, "convert " + quoted + " " + quoted + ".plv",
          "info a " + quoted + " --\x1b"}) {
        const std::string out = runProgram(arguments).out;
        EXPECT_FALSE(out.empty());
        for (const char* byte : {"\x1b", "\x9b", "\xff"}) {
            EXPECT_EQ(out.find(byte), std::string::npos) << arguments << out;
        }
    }
    EXPECT_NE(runProgram("info " + quoted).out.find("a?[31m?? \xc3\xa9.uf"), std::string::npos);
}

/* A pipe can be read once and in order only, and standard input has no name. */
TEST_F(Program, PipesAreReadAsFiles) {
    const std::string file = runProgram("info " + scan_).out;
    const std::string body = file.substr(file.find('\n'));
    EXPECT_EQ(runProgram("info - < " + scan_ + " #").out, "<standard input>" + body);
    EXPECT_EQ(runProgram("info - < " + scan_ + " #").code, 0);
    const std::string out = directory_.path() + "/out/", fifo = directory_.file("fifo");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    const Outcome outcome = runProgram("classify -q " + fifo + " -o " + out + " & cat " + scan_ +
                                       " > " + fifo + "; wait $! #");
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + out).code, 0);
    EXPECT_EQ(readFile(out + "fifo.uf"), readFile(out + "scan.uf"));
    for (const char* device : {"info /dev/zero", "info - </dev/zero #"}) {
        const Outcome refused = runProgram(device);
        EXPECT_EQ(refused.code, 1);
        EXPECT_NE(refused.out.find("is a device"), std::string::npos) << refused.out;
    }
}

TEST(Failures, MemoryThatRunsOutIsReportedForTheFile) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(cli::attempt("scan.uf", [] { throw std::bad_alloc(); }));
    EXPECT_THROW(cli::naming("scan.uf", [] { throw std::bad_alloc(); }), cli::FileError);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "clutterclassifier: scan.uf: not enough memory\n");
}

/* The program finds the tables that came with it, wherever its tree is. */
TEST_F(Program, TheProgramFindsTheTablesThatCameWithIt) {
    unsetenv("CLUTTERCLASSIFIER_MEMBERSHIP");
    const fs::path moved = directory_.file("tree");
    const fs::path shipped = "share/clutterclassifier/membership";
    fs::create_directories(moved / "bin");
    fs::copy_file(kProgram, moved / "bin/clutterclassifier");
    fs::create_symlink(fs::path(kProgram).parent_path().parent_path() / "lib", moved / "lib");
    const std::string call = (moved / "bin/clutterclassifier").string() + " classify -q " + scan_;
    EXPECT_NE(runCommand(call).out.find("no membership directory found"), std::string::npos);
    fs::create_directories((moved / shipped).parent_path());
    fs::copy(fs::path(kMembershipDirectory).parent_path(), moved / shipped,
             fs::copy_options::recursive);
    EXPECT_EQ(runCommand(call).code, 0);
    EXPECT_EQ(runProgram("classify -q " + scan_).code, 0);
}

TEST_F(Program, OneBadFileDoesNotStopTheOthers) {
    const std::string bad = directory_.file("bad.uf");
    writeFile(bad, {0, 0, 0, 114, 'U', 'F', 1, 2});
    const std::string out = directory_.path() + "/out/";
    const Outcome outcome = runProgram("classify " + bad + " " + scan_ + " -o " + out);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.out, HasSubstr("bad.uf: "));
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"scan.uf"}));
}

TEST_F(Program, QuietMeansQuietAndPipesSeeNoProgress) {
    EXPECT_EQ(runProgram("classify -q " + scan_).out, "");
    const Outcome outcome = runProgram("classify " + volume());
    EXPECT_THAT(outcome.out, Not(HasSubstr("\r")));
    EXPECT_THAT(outcome.out, Not(HasSubstr("\033")));
}

TEST_F(Program, VersionAndHelpSucceed) {
    EXPECT_EQ(runProgram("--version").out.find("clutterclassifier "), 0u);
    for (const char* command :
         {"", "classify ", "info ", "plot ", "extract ", "export ", "demo "}) {
        const Outcome outcome = runProgram(std::string(command) + "--help");
        EXPECT_EQ(outcome.code, 0) << command;
        EXPECT_THAT(outcome.out, HasSubstr("Usage")) << command;
    }
    EXPECT_THAT(runProgram("info --help").out, Not(HasSubstr("clutterclassifier demo")));
}

}  // namespace
