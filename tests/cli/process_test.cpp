/* The processing chain from the shell: a scan of rain whose attenuation is known. */
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "formats/uf_bytes.h"
#include "run_program.h"
#include "scan/formats/read_scan.h"
#include "scan/process/fill_phase.h"
#include "support/directories.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr, testing::Not;

namespace fs = std::filesystem;
using clutter::test::TempDir;
using clutter::test::UfField;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

TEST(PhaseGaps, AreClosedAlongTheRay) {
    const struct {
        std::vector<float> ray, filled;
    } kCases[] = {
        {{1, 2, 3}, {1, 2, 3}},
        {{10, kNan, kNan, kNan, 30}, {10, 15, 20, 25, 30}},
        {{kNan, kNan, 5, kNan, 7, INFINITY}, {5, 5, 5, 6, 7, 7}},
        {{kNan, 4}, {4, 4}},
        {{}, {}},
    };
    for (auto row : kCases) {
        scan::fillPhaseGaps(row.ray.data(), 1, static_cast<int>(row.ray.size()));
        EXPECT_EQ(row.ray, row.filled);
    }
}

TEST(PhaseGaps, EmptyRaysTakeTheMedianOfTheFirstValues) {
    const struct {
        std::vector<float> scan, filled;  // rays of two gates
        std::vector<int> empty;
    } kCases[] = {
        {{kNan, kNan, 50, 99, kNan, 40, 60, 0, kNan, INFINITY},
         {50, 50, 50, 99, 40, 40, 60, 0, 50, 50},
         {0, 4}},
        {{kNan, kNan, kNan, kNan}, {0, 0, 0, 0}, {0, 1}},
        {{7, 8}, {7, 8}, {}},
    };
    for (auto row : kCases) {
        const scan::EmptyRays empty =
            scan::fillPhaseGaps(row.scan.data(), static_cast<int>(row.scan.size() / 2), 2);
        EXPECT_EQ(row.scan, row.filled);
        EXPECT_EQ(empty.rays, row.empty);
    }
}

constexpr int kRays = 60, kGates = 240;
constexpr int kFirstRain = 20, kLastRain = 179, kEcho = 215;
constexpr double kSpacingKm = 0.25;
constexpr double kTrueZ = 40, kOffset = 60, kKdp = 2;  // dBZ, degrees, degrees/km
constexpr double kAlpha = 0.073;                       // dB a degree, the nominal ratio

bool isRain(int gate) {
    return gate >= kFirstRain && gate <= kLastRain;
}

bool hasNoPhase(int ray) {
    return ray == 9 || ray >= 44;
}

/* Phase and two-way attenuation at a gate of uniform rain. */
double riseAt(int gate) {
    const int gates = std::min(std::max(gate - kFirstRain + 1, 0), kLastRain - kFirstRain + 1);
    return 2 * kKdp * kSpacingKm * gates;
}

std::vector<UfField> makeRay() {
    std::vector<UfField> fields = {{"DZ", {}}, {"DR", {}}, {"PH", {}}, {"RH", {}}};
    for (int g = 0; g < kGates; ++g) {
        const double wobble = 0.01 * (g % 2);
        const double values[] = {isRain(g) ? kTrueZ - kAlpha * riseAt(g) : -327.68, 1 + wobble,
                                 kOffset + riseAt(g), 0.98 + wobble};
        for (size_t f = 0; f < fields.size(); ++f) {
            fields[f].words.push_back(static_cast<int>(std::lround(100 * values[f])));
        }
    }
    return fields;
}

class Process : public testing::Test {
  protected:
    void SetUp() override {
        setenv("CLUTTERCLASSIFIER_MEMBERSHIP", kMembershipDirectory, 1);
        std::vector<clutter::test::UfRecord> rays;
        for (int r = 0; r < kRays; ++r) {
            std::vector<UfField> fields = makeRay();
            /* Ray 7 has gaps in its phase; many have none at all. */
            for (int g = 0; g < kGates; ++g) {
                if (hasNoPhase(r) || (r == 7 && g % 5 == 2)) {
                    fields[2].words[static_cast<size_t>(g)] = -32768;
                }
            }
            if (r == 20) {
                fields[0].words[kEcho] = 4000;
            }
            rays.push_back(clutter::test::ufRay(fields, r + 1));
            rays.back().set(33, r * 64 * 360 / kRays);
        }
        scan_ = directory_.file("scan.uf");
        clutter::test::writeFile(scan_, clutter::test::ufFile(rays));
    }
    void TearDown() override { unsetenv("CLUTTERCLASSIFIER_MEMBERSHIP"); }

    std::string write(const std::string& name, const std::string& text) {
        const std::string path = directory_.file(name);
        clutter::test::writeFile(path, {text.begin(), text.end()});
        return path;
    }
    Outcome process(const std::string& arguments) {
        return runProgram("process " + scan_ + " --radar-constant 60 " + arguments);
    }
    static float valueOf(const scan::Scan& scan, const std::string& name, int ray, int gate) {
        for (const scan::Field& field : scan.sweeps.at(0).fields) {
            if (field.name == name) {
                return field.values[static_cast<size_t>(ray * kGates + gate)];
            }
        }
        ADD_FAILURE() << "no field " << name;
        return kNan;
    }
    TempDir directory_;
    std::string scan_;
};

/* The rise of the phase is taken between means of 20 gates at both ends: 20 gates of it are lost.
 */
constexpr double kLost = kAlpha * 2 * kKdp * kSpacingKm * 20 + 0.05;

/* Nominal coefficients, no smoothing, and no freezing level within reach. */
constexpr char kSettings[] =
    "ATTENUATION_ALG 4\nGATES2AVE_ZHH 0\nGATES2AVE_ZDR 0\nGATES2AVE_PDP 0\nFREEZING_LEVEL 99000\n";

TEST_F(Process, RestoresTheReflectivityOfUniformRain) {
    const std::string config = write("settings.txt", kSettings);
    for (const char* name : {"out.uf", "out.plv"}) {
        const bool words = std::string(name) == "out.uf";
        const std::string out = directory_.file(name);
        const Outcome outcome = process("--what 159 --config " + config + " -o " + out);
        ASSERT_EQ(outcome.code, 0) << outcome.out;
        EXPECT_THAT(
            outcome.out,
            HasSubstr("17 rays have no phase; using the start phase of the others: 60.0 deg"));
        EXPECT_EQ(scan::recognise(out),
                  words ? scan::FileFormat::kUniversalFormat : scan::FileFormat::kFieldRecord);
        const scan::Scan scan = scan::readScan(out);
        for (int ray : {3, 7}) {
            for (int gate = kFirstRain + 5; gate < kLastRain - 15; ++gate) {
                EXPECT_NEAR(valueOf(scan, words ? "DZ" : "Zh", ray, gate), kTrueZ, kLost) << gate;
                const float phase = valueOf(scan, words ? "PH" : "Phidp", ray, gate);
                if (ray == 7 && gate % 5 == 2) {
                    EXPECT_TRUE(std::isnan(phase));
                } else {
                    EXPECT_NEAR(phase, riseAt(gate) - riseAt(24), 3);
                }
                const double rate = std::pow(1e4 / 200, 1 / 1.6);
                EXPECT_NEAR(valueOf(scan, words ? "RR" : "R", ray, gate), rate, 0.25 * rate);
                EXPECT_NEAR(valueOf(scan, words ? "AL" : "alpha", ray, gate), kAlpha, 1e-4);
                EXPECT_NEAR(valueOf(scan, words ? "AH" : "Ah", ray, gate), kAlpha * kKdp, 0.05);
            }
            EXPECT_TRUE(std::isnan(valueOf(scan, words ? "DZ" : "Zh", ray, 5)));
            /* Blanked: the file has a correlation there. */
            EXPECT_TRUE(std::isnan(valueOf(scan, words ? "RH" : "RhoHV", ray, 5)));
        }
        EXPECT_EQ(valueOf(scan, words ? "CC" : "CCl", 3, 100), 0);
        /* A ray without phase keeps its reflectivity. */
        EXPECT_NEAR(valueOf(scan, words ? "DZ" : "Zh", 9, 150), kTrueZ - kAlpha * riseAt(150),
                    0.02);
    }
}

/* The first gate lies at 2000 m. */
TEST_F(Process, AppendsSamplesAtPoints) {
    const std::string points = write("points.txt", "25000 18\n30000 357\n999000 18\n");
    const std::string prefix = directory_.file("gauge");
    const std::string arguments = "--what 17 --points " + points + " --prefix " + prefix;
    const Outcome outcome = process(arguments);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("1 of 3 points are outside"));
    ASSERT_EQ(process(arguments).code, 0);
    std::ifstream file(prefix + "_zhh.dat");
    int lines = 0;
    for (std::string line; std::getline(file, line); ++lines) {
        std::istringstream numbers(line);
        int date[6];
        double near = 0, far = 0;
        for (int& part : date) {
            numbers >> part;
        }
        numbers >> near >> far;
        EXPECT_NEAR(near, kTrueZ - kAlpha * riseAt(92), 0.05) << line;
        EXPECT_NEAR(far, kTrueZ - kAlpha * riseAt(112), 0.05) << line;
    }
    EXPECT_EQ(lines, 2);
    for (const auto& entry : fs::directory_iterator(directory_.path())) {
        if (entry.path().filename().string().rfind("gauge_", 0) == 0) {
            const clutter::test::ByteVector bytes = clutter::test::readFile(entry.path().string());
            EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '\n'), 2) << entry.path();
        }
    }
    EXPECT_TRUE(fs::exists(prefix + "_R.dat"));
    EXPECT_FALSE(fs::exists(prefix + "_Ah.dat"));  // the stage did not run
    EXPECT_FALSE(fs::exists(prefix + "_KDP.dat"));
}

/* Where the files hold no value, samples show none of the context's own numbers. */
TEST_F(Process, SamplesOfGatesWithoutValueAreNan) {
    const std::string points = write("points.txt", "3000 18\n25000 18\n");
    const std::string prefix = directory_.file("gauge");
    const std::string arguments = " --points " + points + " --prefix " + prefix;
    ASSERT_EQ(process("--what 17" + arguments).code, 0);   // no echo
    ASSERT_EQ(process("--what 145" + arguments).code, 0);  // and blanked
    for (const char* field : {"_zhh.dat", "_R.dat", "_rhv.dat"}) {
        std::ifstream file(prefix + field);
        for (const bool blanks : {false, true}) {
            std::string date, without, with;
            for (int part = 0; part < 6; ++part) {
                file >> date;
            }
            ASSERT_TRUE(file >> without >> with) << field;
            EXPECT_EQ(without == "nan", blanks || std::string(field) != "_rhv.dat") << without;
            EXPECT_NE(with, "nan") << field;
        }
    }
}

/* Zero rain would make zero reflectivity of everything. */
TEST_F(Process, LeavesOutStagesThatLackTheirInputs) {
    const std::string config = write("settings.txt", "RAINFALL_ALG 3\n");
    const std::string out = directory_.file("out.plv");
    const Outcome outcome = process("--what 49 --map PH=none --config " + config + " -o " + out);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("no rain rate: relation 3"));
    EXPECT_THAT(outcome.out, HasSubstr("no reflectivity from rain rate"));
    EXPECT_NEAR(valueOf(scan::readScan(out), "Zh", 3, 60), kTrueZ - kAlpha * riseAt(60), 0.02);
    const Outcome correction = process("--what 9 --map PH=none");
    EXPECT_THAT(correction.out, HasSubstr("no attenuation correction"));
    EXPECT_THAT(correction.out, Not(HasSubstr("variables are missing")));
}

TEST_F(Process, TakesStagesFromTheSettingsAndClassesFromTheFile) {
    const std::string config = write("settings.txt", "WHAT2DO 1\nCLUTTER_ALG 15\n");
    const std::string classes = directory_.file("classes.uf");
    const Outcome first = process("--config " + config + " -o " + classes);
    ASSERT_EQ(first.code, 0) << first.out;
    EXPECT_THAT(first.out, HasSubstr("inputs       textures of zhh zdr pdp rhv\n"));
    EXPECT_THAT(first.out, Not(HasSubstr("Filtering")));
    const Outcome second = runProgram("process " + classes + " --what 4");
    ASSERT_EQ(second.code, 0) << second.out;
    EXPECT_THAT(second.out, HasSubstr("Filtering"));
    EXPECT_THAT(second.out, Not(HasSubstr("there are no classes")));
}

/* Ray 20 has one echo far past the rain. */
TEST_F(Process, MakesIsolatedGatesClutterAsTheClassificationDoesOnRequest) {
    const std::string processed = directory_.file("processed.uf");
    const std::string kept = directory_.file("kept.uf"), removed = directory_.file("removed.uf");
    ASSERT_EQ(process("--what 1 -o " + processed).code, 0);
    const std::string classify = "classify " + scan_ + " --radar-constant 60 -o ";
    ASSERT_EQ(runProgram(classify + kept).code, 0);
    ASSERT_EQ(runProgram(classify + removed + " --remove-isolated").code, 0);
    EXPECT_EQ(valueOf(scan::readScan(kept), "CC", 20, kEcho), 0);
    EXPECT_EQ(valueOf(scan::readScan(removed), "CC", 20, kEcho), 5);
    EXPECT_EQ(valueOf(scan::readScan(processed), "CC", 20, kEcho), 5);
}

TEST_F(Process, RepeatsTheSearchForCoefficientsBySeed) {
    const auto coefficients = [this](const std::string& arguments) {
        const std::string out = directory_.file("searched.plv");
        const Outcome outcome = process("--what 9 -o " + out + arguments);
        EXPECT_THAT(outcome.out, HasSubstr(arguments.empty() ? "with seed 1\n" : "with seed 2\n"));
        const scan::Scan scan = scan::readScan(out);
        return std::pair(valueOf(scan, "alpha", 3, 0), valueOf(scan, "alpha", 4, 0));
    };
    const auto usual = coefficients("");
    EXPECT_EQ(coefficients(""), usual);
    EXPECT_NE(coefficients(" --seed 2"), usual);
    const Outcome nominal = process("--what 9 --config " + write("settings.txt", kSettings));
    EXPECT_THAT(nominal.out, Not(HasSubstr("seed")));
}

TEST_F(Process, DrawsAndStaysQuiet) {
    const std::string picture = directory_.file("rain.png");
    const Outcome outcome = process("-q --plot DZ,r,CCl --picture " + picture);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_GT(fs::file_size(picture), 5000u);
}

TEST_F(Process, WarnsOfSettingsThatMeanNothing) {
    const std::string odd = write("odd.txt", "RAINFALL_ALG -2\nATTENUATION_ALG 9\n");
    const char* const warning = "odd.txt:2: ATTENUATION_ALG: 9 is not within -1 to 8";
    for (const auto& [command, code] : {std::pair{"process " + scan_ + " --what 17 --config ", 0},
                                        {"process --check-config ", 1}}) {
        const Outcome outcome = runProgram(command + odd);
        EXPECT_EQ(outcome.code, code) << outcome.out;
        EXPECT_THAT(outcome.out, HasSubstr(warning));
        EXPECT_THAT(outcome.out, Not(HasSubstr("odd.txt:1:")));
    }
}

TEST_F(Process, RefusesWithAReason) {
    const std::string bad = write("bad.txt", "WHAT2DO 1\nZDR_BIAS high\n");
    const std::string settings = write("settings.png", kSettings);
    const std::string points = write("points.txt", "25000 18\n");
    const std::string files =
        "--config " + settings + " --points " + points + " --prefix " + directory_.file("p") + " ";
    const std::string out = directory_.file("out.uf");
    const auto before = std::distance(fs::directory_iterator(directory_.path()), {});
    const auto with = [&](const std::string& arguments) {
        return "process -q " + scan_ + " " + arguments;
    };
    const auto to = [&](const std::string& arguments) { return with(arguments + " -o " + out); };
    expectRefusals({
        {to("--config " + directory_.file("none")), 1, "No such file"},
        {to("--plot XX"), 1, "no processed field XX among: Zh"},
        {to("--points " + bad), 2, "--prefix"},
        {to("--picture a.png"), 2, "--plot"},
        {to("--plot Zh --picture a.gif"), 2, ".png, .svg or .pdf"},
        {to("--what 256"), 2, "--what"},
        {to("--freezing-level nan"), 2, "nan"},
        {to("--map ZZ=zdr"), 1, "no field named ZZ"},
        {to("--sweep 8"), 1, "no sweep number 8"},
        {to("--map ZD=zdr,DR=zdr"), 2, "ZD and DR are both mapped to zdr"},
        {to("--layout 252"), 2, "--layout"},
        {to("--check-config " + bad), 2, "--check-config: cannot be combined with INPUT"},
        {to("--print-config"), 2, "--print-config: cannot be combined with INPUT"},
        {"process", 2, "INPUT"},
        {"process --check-config " + bad + " --config " + bad, 2, "--config"},
        {with("-o " + directory_.file("out.csv")), 2, "csv"},
        {with(files + "-o " + scan_), 2, "would overwrite "},
        {with(files + "-o " + settings), 2, "would overwrite "},
        {with(files + "-o " + points), 2, "would overwrite "},
        {with(files + "--plot Zh --picture " + settings), 2, "would overwrite "},
    });
    for (const std::string& call : {to("--config " + bad), "process --check-config " + bad}) {
        const Outcome outcome = runProgram(call);
        EXPECT_EQ(outcome.code, 1) << call;
        EXPECT_THAT(outcome.out, HasSubstr("bad.txt:2: ZDR_BIAS: high is not a number"));
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(directory_.path()), {}), before);
    EXPECT_EQ(fs::file_size(settings), sizeof kSettings - 1);
}

TEST_F(Process, PrintsSettingsThatItAccepts) {
    const std::string path = directory_.file("settings.txt");
    const Outcome printed = runProgram("process --print-config >" + path + " 2>/dev/null #");
    ASSERT_EQ(printed.code, 0);
    const Outcome checked = runProgram("process --check-config " + path);
    EXPECT_EQ(checked.code, 0) << checked.out;
    EXPECT_THAT(checked.out, HasSubstr("22 settings, nothing wrong"));
}

}  // namespace
