/* Formats that the program takes and gives, through its reader and the program itself. */
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>

#include "formats/german_dx_bytes.h"
#include "formats/polar_bytes.h"
#include "formats/uf_bytes.h"
#include "run_program.h"
#include "scan/formats/polar/write_polar.h"
#include "scan/formats/read_scan.h"
#include "support/directories.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr, testing::Not;

using namespace clutter::test;

class Formats : public testing::Test {
  protected:
    bool run(const std::string& arguments) {
        const Outcome outcome = runProgram(arguments);
        said_ = outcome.out;
        code_ = outcome.code;
        return code_ == 0;
    }
    std::string put(const std::string& name, const ByteVector& bytes) {
        writeFile(dir_.file(name), bytes);
        return dir_.file(name);
    }
    std::string refusal(const std::string& path, int layout = 0) {
        try {
            scan::readScan(path, {layout});
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }
    const scan::Sweep& sweepOf(const scan::Scan& scan) { return scan.sweeps.at(0); }

    TempDir dir_;
    std::string said_;
    int code_ = 0;
    std::mt19937 random_{5};
};

TEST_F(Formats, GermanDxIsRecognisedAndKeepsItsElevations) {
    const std::string path = put("scan", dxFile(128));
    EXPECT_EQ(scan::recognise(path), scan::FileFormat::kGermanDx);
    const scan::Scan scan = scan::readScan(path);
    const scan::Sweep& sweep = sweepOf(scan);
    ASSERT_EQ(sweep.fields.size(), 1u);
    EXPECT_EQ(sweep.ngates, 128);
    EXPECT_EQ(sweep.fields[0].name, "Z");
    EXPECT_EQ(sweep.fields[0].values[1], -29.0f);
    EXPECT_TRUE(std::isnan(sweep.fields[0].values[5])) << "an empty bin";
    EXPECT_NEAR(sweep.elevationDeg[6], 0.6, 1e-6);
    ByteVector odd = dxStart();
    appendDxRay(odd, 0, 0, {120, 16});
    EXPECT_THAT(refusal(put("odd", odd)), HasSubstr("neither 100 nor 128 bins"));
    EXPECT_THAT(refusal(put("text", {'D', 'X', 'F', ' ', 'e', 't', 'c', '.'})),
                HasSubstr("of no known format"));
}

TEST_F(Formats, PolarDataAsksForALayoutOnlyWhereItMatters) {
    const std::string full =
        put("2211", randomPolarFile(2211, 10, false, 36, 20, random_).set(84, 400).bytes());
    EXPECT_EQ(scan::recognise(full), scan::FileFormat::kPolarData);
    EXPECT_THAT(refusal(full), HasSubstr("a layout that the file does not state"));
    EXPECT_FALSE(run("info " + full));
    EXPECT_THAT(said_, HasSubstr("give --layout 252"));
    const scan::Scan scan = scan::readScan(full, {280});
    EXPECT_EQ(sweepOf(scan).fields.size(), 6u) << "without the padding";
    EXPECT_TRUE(scan.hasRadarConstant);
    EXPECT_EQ(scan.radarConstantDb, 40.0);
    EXPECT_NEAR(sweepOf(scan).nyquist, 12.34, 1e-5);
    EXPECT_EQ(refusal(put("2213", randomPolarFile(2213, 10, false, 3, 5, random_).bytes())), "");
    EXPECT_NE(refusal(put("2215", PolarBytes(2215).bytes())).find("unknown product"),
              std::string::npos);
    EXPECT_TRUE(run("info " + full + " --layout 260")) << said_;
    EXPECT_FALSE(run("info " + full + " --layout 250"));
}

/* Each product has gates of its own size, which alone shows that the end is missing. */
TEST_F(Formats, PolarDataThatEndEarlyAreDamaged) {
    const struct {
        int product;
        std::size_t gateBytes;
        int layout;
    } kPacked[] = {{2111, 2, 0},    {2122, 4, 0},   {2141, 4, 0},  {2211, 9, 252}, {2211, 10, 260},
                   {2211, 10, 280}, {2212, 8, 252}, {2213, 10, 0}, {2214, 8, 0}};
    const auto expectDamage = [&](ByteVector bytes, int layout) {
        EXPECT_TRUE(scan::readScan(put("whole", bytes), {layout}).damage.empty());
        bytes.pop_back();
        const scan::Scan cut = scan::readScan(put("cut", bytes), {layout});
        ASSERT_EQ(cut.damage.size(), 1u);
        EXPECT_EQ(cut.damage[0].find("The file ends 1 bytes early"), 0u) << cut.damage[0];
    };
    for (const auto& row : kPacked) {
        SCOPED_TRACE(row.product);
        expectDamage(randomPolarFile(row.product, row.gateBytes, false, 3, 5, random_).bytes(),
                     row.layout);
    }
    const std::string dx = put("scan.dx", dxFile(100)), out = dir_.file("x.pol");
    for (const int product : scan::singleParameterProducts()) {
        SCOPED_TRACE(product);
        ASSERT_TRUE(run("convert " + dx + " " + out + " --product " + std::to_string(product)))
            << said_;
        expectDamage(readFile(out), 0);
    }
}

TEST_F(Formats, ConvertedScansKeepTheirValues) {
    const std::string dx = put("scan.dx", dxFile(100));
    const scan::Scan before = scan::readScan(dx);
    for (const char* ending : {".uf", ".plv", ".pol"}) {
        SCOPED_TRACE(ending);
        const std::string out = dir_.file(std::string("copy") + ending);
        ASSERT_TRUE(run("convert " + dx + " " + out)) << said_;
        const scan::Scan after = scan::readScan(out);
        EXPECT_EQ(after.time.minute, 55);
        EXPECT_EQ(sweepOf(after).nrays, 360);
        ASSERT_EQ(sweepOf(after).ngates, 100);
        for (std::size_t i = 0; i < 36000; ++i) {
            const float was = sweepOf(before).fields[0].values[i];
            const float is = sweepOf(after).fields[0].values[i];
            ASSERT_TRUE(was == is || (std::isnan(was) && std::isnan(is))) << i << ": " << is;
        }
        for (std::size_t r = 0; r < 360; ++r) {
            ASSERT_NEAR(sweepOf(after).azimuthDeg[r], static_cast<double>(r), 0.01);
        }
    }
    EXPECT_THAT(said_, HasSubstr("wrote"));
}

/* A wrong call has another exit code than a file that cannot be converted. */
TEST_F(Formats, ConvertAndRepackRefuseWithAReason) {
    const std::string dx = put("scan.dx", dxFile(100));
    const std::string out = dir_.file("x.pol");
    expectRefusals({
        {"convert " + dx + " " + dx, 2, "would overwrite "},
        {"convert " + dx + " " + dir_.path() + "/./scan.dx", 2, "would overwrite "},
        {"convert " + dx + " " + out + " --product 2213", 2, "1813,1814,1815"},
        {"convert " + dx + " " + out + ".uf --product 1814", 2, "--product: goes with"},
        {"convert " + dx + " " + out + ".plv --field Z", 2, "--field: goes with"},
        {"convert " + dx + " " + out + ".dx", 2, "a .dx file cannot be written here"},
        {"convert " + dx + " " + out + ".csv", 2, "a .csv file cannot be written here"},
        {"convert " + dx + " " + out + " --layout 280", 2, "--layout: goes with"},
        {"convert " + dx + " " + out + " --field W", 1, "has no field W"},
        {"convert " + dx + " " + out + " --sweep 8", 1, "has no sweep number 8"},
        {"repack " + dx + " " + dx, 2, "would overwrite "},
        {"repack " + dx + " " + out, 1, "is not a polar data file"},
    });
    EXPECT_TRUE(readFile(out).empty()) << "nothing is left behind";
    EXPECT_EQ(readFile(dx), dxFile(100));
}

/* The reader turns 10 turns a minute, 36 rays and 900 pulses a second into 150 pulses a ray. */
TEST_F(Formats, ConvertedScansKeepHowTheRadarWorked) {
    const std::string first =
        put("scan.pol", randomPolarFile(2213, 10, false, 36, 20, random_).set(118, 150).bytes());
    const std::string second = dir_.file("copy.plv"), third = dir_.file("copy.pol");
    ASSERT_TRUE(run("convert " + first + " " + second)) << said_;
    ASSERT_TRUE(run("convert " + second + " " + third)) << said_;
    for (const std::string& path : {first, second, third}) {
        const scan::Operation operation = scan::readScan(path).operation;
        EXPECT_EQ(operation.pulseLengthM, 150.0f) << path;
        EXPECT_EQ(operation.turnsPerMinute, 10.0f);
        EXPECT_EQ(operation.pulsesPerSecond, 900.0f);
        EXPECT_EQ(operation.pulsesPerRay, 150.0f);
    }
}

TEST_F(Formats, ConvertSaysWhatAPolarDataFileCannotHold) {
    UfRecord ray = ufRay({{"DM", {-9000, -8000}}, {"DZ", {100, 200}}});
    const auto say = [&](const char* ending) {
        const std::string path = put("scan.uf", ufFile({ray}));
        EXPECT_TRUE(run("convert " + path + " " + dir_.file("out") + ending)) << said_;
    };
    say(".pol");
    EXPECT_THAT(said_, Not(HasSubstr("note:")));
    constexpr std::size_t kHeader = 67;  // of the first field: its constant and its noise
    ray.set(19, -50).set(20, 0).set(21, 0).set(22, -7).set(23, 0).set(24, 0).set(25, -4);
    ray.set(35, 3).set(kHeader + 19, 11500).set(kHeader + 20, -11000);
    say(".pol");
    for (const char* what :
         {"a longitude of -7", "a latitude of -50", "a height of -4", "a radar constant of -5",
          "a polar data file cannot hold the elevations"}) {
        EXPECT_THAT(said_, HasSubstr(what)) << what;
    }
    EXPECT_FALSE(scan::readScan(dir_.file("out.pol")).hasRadarConstant);
    say(".plv");
    EXPECT_THAT(said_, HasSubstr("a field record file cannot hold the elevations"));
    say(".uf");
    EXPECT_THAT(said_, Not(HasSubstr("note:")));
}

/* A word of 16 bits has another latitude for such a site, and other values for steep ones. */
TEST_F(Formats, ConvertSaysWhatUniversalFormatCannotHold) {
    PolarBytes file(1814, 3, 2);
    const float values[] = {400.02f, -700.0f, 40000.0f};
    for (int r = 0; r < 3; ++r) {
        ByteVector gates(8);
        for (std::size_t g = 0; g < 2; ++g) {
            std::memcpy(&gates[4 * g], &values[r], 4);
        }
        file.ray(9000 * r, gates);
    }
    const std::string path = put("scan", file.set(84, 600).bytes());
    ASSERT_TRUE(run("convert " + path + " " + dir_.file("out.uf"))) << said_;
    EXPECT_EQ(said_.find("latitude"), std::string::npos) << said_;
    EXPECT_NE(said_.find("cannot hold the values of P1814 beyond 32767"), std::string::npos);
    const scan::Scan written = scan::readScan(dir_.file("out.uf"));
    const std::vector<float>& kept = sweepOf(written).fields.at(0).values;
    EXPECT_EQ(kept.at(0), 400.0f) << "at the finest scale that holds the largest";
    EXPECT_EQ(kept.at(2), -700.0f);
    EXPECT_TRUE(std::isnan(kept.at(4)));
    put("scan", file.set(58, 60000).bytes());
    ASSERT_TRUE(run("convert " + path + " " + dir_.file("out.uf"))) << said_;
    EXPECT_NE(said_.find("cannot hold a latitude of 60000"), std::string::npos) << said_;
    EXPECT_EQ(scan::readScan(dir_.file("out.uf")).latitudeDeg, 0.0);
}

TEST_F(Formats, AllClassesAreSeparatedOnRequest) {
    // Half of the scan is calm, the other half is as rough as the sea.
    PolarBytes file(1814, 36, 60);
    std::normal_distribution<float> normal;
    for (int r = 0; r < 36; ++r) {
        ByteVector gates(240);
        for (std::size_t g = 0; g < 60; ++g) {
            const float z = 40.0f + (r < 18 ? 1.2f : 4.0f) * normal(random_);
            std::memcpy(&gates[4 * g], &z, 4);
        }
        file.ray(1000 * r, gates);
    }
    const std::string path = put("scan", file.set(84, 600).bytes());
    const std::string common = "classify " + path + " --map P1814=zhh -o " + dir_.file("out.plv");
    ASSERT_TRUE(run(common)) << said_;
    EXPECT_THAT(said_, Not(HasSubstr("sea clutter")));
    ASSERT_TRUE(run(common + " --classes all --plot " + dir_.file("out.png"))) << said_;
    EXPECT_THAT(said_, HasSubstr("sea clutter"));
    EXPECT_THAT(said_, HasSubstr("  wrote " + dir_.file("out.png") + "\n"));
    const scan::Scan classes = scan::readScan(dir_.file("out.plv"));
    int sea[2] = {};
    for (std::size_t i = 0; i < 2160; ++i) {
        sea[i / 1080] += sweepOf(classes).fields[0].values[i] == 6.0f;
    }
    EXPECT_LT(sea[0], 100);
    EXPECT_GT(sea[1], 300);

    const std::string membership = dir_.file("membership");
    std::filesystem::copy(kMembershipDirectory, membership);
    std::filesystem::remove(membership + "/cal_mf_sZhh_turclut.dat");
    EXPECT_TRUE(run(common + " --membership " + membership)) << said_;
    EXPECT_FALSE(run(common + " --classes all --membership " + membership));
    EXPECT_THAT(said_, HasSubstr(membership + "/cal_mf_sZhh_turclut.dat: No such file"));
}

TEST_F(Formats, RepackShortensOrSaysWhyNot) {
    PolarBytes file = randomPolarFile(2211, 9, false, 36, 120, random_);
    const std::string steep = put("steep", file.set(116, 2500).set(274, 90).bytes());
    const std::string out = dir_.file("out");
    ASSERT_TRUE(run("repack " + steep + " " + out + " --layout 252")) << said_;
    EXPECT_THAT(said_, HasSubstr("24 instead of 120 gates"));
    const scan::Scan before = scan::readScan(steep, {252}), after = scan::readScan(out, {252});
    EXPECT_EQ(sweepOf(after).fields[2].values[35 * 24 + 23],
              sweepOf(before).fields[2].values[35 * 120 + 23]);
    ByteVector bytes = readFile(steep);
    bytes.pop_back();
    ASSERT_TRUE(run("repack " + put("cut", bytes) + " " + out + " --layout 252")) << said_;
    EXPECT_THAT(said_, HasSubstr("  note: The file ends 1 bytes early"));
    const std::string low = put("low", file.set(274, 5).bytes());
    EXPECT_FALSE(run("repack " + low + " " + dir_.file("no") + " --layout 252"));
    EXPECT_THAT(said_, HasSubstr("shorter"));
    const std::string other =
        put("2214",
            randomPolarFile(2214, 8, false, 4, 120, random_).set(116, 2500).set(274, 90).bytes());
    EXPECT_FALSE(run("repack " + other + " " + dir_.file("no") + " --layout 252"));
    EXPECT_TRUE(readFile(dir_.file("no")).empty());
}

}  // namespace
