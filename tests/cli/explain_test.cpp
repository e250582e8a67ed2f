// Certainty as files hold it, and the explanation of one gate.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "program_scan.h"
#include "run_program.h"
#include "scan/classes/classify_sweep.h"
#include "scan/classes/inputs.h"
#include "scan/fields/find_field.h"
#include "scan/formats/read_scan.h"

namespace {

using namespace clutter::test;
using testing::HasSubstr;
using Explain = ProgramOnAScan;

/* The numbers of a key of a JSON object, in order. */
std::vector<double> numbers(const std::string& json, const std::string& key) {
    std::vector<double> found;
    const std::string before = "\"" + key + "\": ";
    for (std::size_t at = json.find(before); at != std::string::npos; at = json.find(before, at)) {
        at += before.size();
        char* end = nullptr;
        const double number = std::strtod(json.c_str() + at, &end);
        if (end != json.c_str() + at && std::isfinite(number)) {
            found.push_back(number);
        }
    }
    return found;
}

/* The centre of a gate as --at takes it: 6 degrees a ray, gates of 250 m from 1.5 km. */
std::string at(const scan::Sweep& sweep, int ray, int gate) {
    return " --at " + std::to_string(sweep.azimuthDeg[static_cast<std::size_t>(ray)] + 0.3) + "," +
           std::to_string((sweep.firstGateM + gate * sweep.gateSpacingM) / 1000 + 0.1);
}

TEST_F(Explain, FilesHoldHowCertainClassesAre) {
    for (const char* arguments : {"classify -q -o ", "process -q --what 1 -o "}) {
        for (const char* ending : {".uf", ".plv"}) {
            const std::string out = directory_.file(std::string("certain") + ending);
            ASSERT_EQ(runProgram(arguments + out + " --certainty " + scan_).code, 0) << arguments;
            const scan::Scan scan = scan::readScan(out);
            const scan::Sweep& sweep = scan.sweeps.at(0);
            const std::vector<float>& margin = scan::findField(sweep, "MA").values;
            const std::vector<float>& probability = scan::findField(sweep, "PR").values;
            const std::string name = std::string(ending) == ".uf" ? "CC" : "CCl";
            const std::vector<float>& classes = scan::findField(sweep, name).values;
            int clutter = 0;
            for (std::size_t i = 0; i < classes.size(); ++i) {
                ASSERT_EQ(std::isnan(margin[i]), classes[i] == 3) << i;
                if (classes[i] == 3) {
                    continue;
                }
                ASSERT_NEAR(probability[i], 1 / (1 + std::exp(-margin[i])), 0.002) << i;
                clutter += margin[i] < -0.1;
            }
            EXPECT_GT(clutter, 500) << out;
        }
    }
}

TEST_F(Explain, SharesAddUpToTheMarginOfTheClass) {
    const std::string out = directory_.file("certain.uf");
    for (const std::string window : {"5x3", "off", "9x5"}) {
        const std::string how = " --neighbourhood " + window;
        ASSERT_EQ(runProgram("classify -q " + scan_ + " --certainty -o " + out + how).code, 0);
        const scan::Scan scan = scan::readScan(out);
        const scan::Sweep& sweep = scan.sweeps.at(0);
        for (const auto& [ray, gate] : {std::pair(20, 100), {45, 100}, {40, 60}, {0, 10}}) {
            const auto i = static_cast<std::size_t>(ray * kGates + gate);
            const Outcome json = runProgram("explain --json " + scan_ + how + at(sweep, ray, gate));
            ASSERT_EQ(json.code, 0) << json.out;
            EXPECT_EQ(numbers(json.out, "ray"), std::vector<double>{1.0 * ray});
            EXPECT_EQ(numbers(json.out, "gate"), std::vector<double>{1.0 * gate});
            EXPECT_EQ(numbers(json.out, "class").at(0), scan::findField(sweep, "CC").values[i]);
            const std::vector<double> margin = numbers(json.out, "margin");
            const float written = scan::findField(sweep, "MA").values[i];
            ASSERT_EQ(margin.empty(), std::isnan(written));
            if (margin.empty()) {
                continue;
            }
            double sum = numbers(json.out, "neighbourhood").at(0);
            EXPECT_EQ(sum == 0, window == "off");
            for (const double share : numbers(json.out, "contribution")) {
                sum += share;
            }
            EXPECT_NEAR(sum, margin[0], 1e-5 * (1 + std::abs(margin[0])));
            EXPECT_NEAR(margin[0], written, 0.006);
        }
    }
}

TEST_F(Explain, APictureShowsWhatDecided) {
    const scan::Scan scan = scan::readScan(scan_);
    const scan::Sweep& sweep = scan.sweeps.at(0);
    scan::ClassifyOptions options;
    options.membership = kMembershipDirectory;
    options.certainty = true;
    const std::vector<float> deciding = scan::classifySweep(scan, sweep, options).deciding;
    EXPECT_TRUE(std::isnan(deciding.at(10))) << "noise";
    for (const auto& [ray, gate] : {std::pair(20, 100), {45, 100}, {15, 80}}) {
        const float index = deciding.at(static_cast<std::size_t>(ray * kGates + gate));
        const scan::Input& input = scan::inputs().at(static_cast<std::size_t>(index));
        EXPECT_THAT(runProgram("explain --json " + scan_ + at(sweep, ray, gate)).out,
                    HasSubstr(std::string("\"deciding\": \"") + input.info->name + "\""));
    }
    const std::string all = directory_.file("all.png"), one = directory_.file("one.png");
    ASSERT_EQ(runProgram("plot --why " + scan_ + " -o " + all).code, 0);
    ASSERT_EQ(runProgram("plot --why " + scan_ + " --inputs rhv -o " + one).code, 0);
    EXPECT_NE(readFile(all), readFile(one));
}

TEST_F(Explain, SaysWhatDecidedAndWhatWouldTurnTheVerdict) {
    const scan::Scan scan = scan::readScan(scan_);
    const std::string where = at(scan.sweeps.at(0), 45, 100);
    const Outcome outcome = runProgram("explain " + scan_ + where);
    EXPECT_EQ(outcome.code, 0);
    for (const char* part :
         {"ray 46 (azimuth 270.00 deg", "gate 101 (", "class        ground clutter", "decided by ",
          "zdr-texture ", "neighbourhood ", "No change of one input alone"}) {
        EXPECT_THAT(outcome.out, HasSubstr(part));
    }
    const std::string alone = " --inputs zhh-texture --neighbourhood off";
    const Outcome turned = runProgram("explain " + scan_ + where + alone);
    EXPECT_THAT(turned.out, HasSubstr("turns the verdict: zhh-texture from 8.382 to "));
    const struct {
        std::string arguments;
        int code;
        const char* reason;
    } kRefused[] = {
        {"explain " + scan_ + " --at 10,500", 1, "no gate of that ray"},
        {"explain " + scan_ + " --at 10,-1", 1, "no gate of that ray"},
        {"explain " + scan_ + " --at 10", 2, "--at"},
        {"explain " + scan_ + " --at nan,3", 2, "nan is not a finite number"},
        {"explain " + scan_ + where + " --sweep 9", 1, "has no sweep number 9"},
        {"classify --neighbourhood 4x3 " + scan_, 2, "--neighbourhood: expected two odd sizes"},
        {"classify --neighbourhood 103x3 " + scan_, 2, "up to 101"},
        {"plot " + scan_ + " -o x.png --inputs vel", 2, "--inputs: goes with --why"},
        {"plot --why " + scan_ + " -o x.png --vmin 0", 2, "--vmin: cannot be combined with"},
        {"classify --certainty " + scan_, 2, "--certainty: needs an output"},
    };
    for (const auto& row : kRefused) {
        const Outcome refused = runProgram(row.arguments);
        EXPECT_EQ(refused.code, row.code) << row.arguments;
        EXPECT_THAT(refused.out, HasSubstr(row.reason));
    }
}

}  // namespace
