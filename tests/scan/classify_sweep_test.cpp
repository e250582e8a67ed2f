/* Which inputs take part, what is said of the others, and where the calibration comes from. */
#include "scan/classes/classify_sweep.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "support/directories.h"

namespace scan {
namespace {

Sweep sweepOf(const std::vector<std::string>& names) {
    Sweep sweep;
    sweep.nrays = 1;
    sweep.ngates = 4;
    sweep.gateSpacingM = 250;
    for (const std::string& name : names)
        sweep.fields.push_back({name, "", {0.1f, 0.2f, 0.3f, 0.4f}});
    return sweep;
}

TEST(ClassifySweep, TakesTheInputsThatExistAndNamesThoseThatWereAskedFor) {
    const struct {
        std::vector<std::string> fields;
        const char* inputs; /* none are asked for when it is null */
        int mask;
        const char* absent;
    } cases[] = {
        {{"DZ"}, nullptr, 1, ""},
        {{"DZ", "ZD", "VR", "SW"}, nullptr, 1 + 2 + 16, ""},
        {{"DZ", "ZD", "PH", "RH", "VR", "LD", "CMAP"}, nullptr, 255, ""},
        {{"DZ", "SW"}, "all", 257, " zdr-texture pdp-texture rhv-texture vel ldr pdf rhv"},
        {{"DZ", "RH"}, "rhohv,ldr", 128, " ldr"},
        {{"DZ", "RH"}, "textures", 9, " zdr-texture pdp-texture"},
        {{"DZ", "PH"}, "phidp-texture,ZHH-texture", 5, ""},
    };
    for (const auto& row : cases) {
        ClassifyOptions options;
        options.membership = kMembershipDirectory;
        if (row.inputs) options.mask = parseInputs(row.inputs);
        const Sweep sweep = sweepOf(row.fields);
        const ClassifiedSweep plan = prepareSweep({}, sweep, options);
        EXPECT_EQ(plan.mask, row.mask);
        std::vector<std::string> notes;
        if (*row.absent)
            notes.push_back(std::string("asked for, but not in the file:") + row.absent);
        EXPECT_EQ(plan.notes, notes) << row.mask;
    }
    EXPECT_EQ(describeInputs(511), "textures of zhh zdr pdp rhv; vel ldr pdf rhv wid");
    EXPECT_EQ(describeInputs(128), "rhv");
    EXPECT_EQ(describeInputs(2), "textures of zdr");
}

TEST(ClassifySweep, TakesTheNearestCalibration) {
    const Sweep sweep = sweepOf({"DZ"});
    Scan scan;
    ClassifyOptions options;
    options.membership = kMembershipDirectory;
    const auto expect = [&](ConstantSource source, double constant, double minSnrDb) {
        const ClassifiedSweep plan = prepareSweep(scan, sweep, options);
        EXPECT_EQ(plan.source, source);
        EXPECT_EQ(plan.calibration.radarConstantDb, constant);
        EXPECT_EQ(plan.calibration.minSnrDb, minSnrDb);
    };
    expect(ConstantSource::kEstimate, 0, Calibration{}.minSnrDb);
    scan.hasRadarConstant = true;
    scan.radarConstantDb = 35;
    expect(ConstantSource::kFile, 35, kEchoSnrDb);
    options.radarConstantDb = 40;
    expect(ConstantSource::kUser, 40, kEchoSnrDb);
    options.minSnrDb = 7;
    expect(ConstantSource::kUser, 40, 7);
}

}  // namespace
}  // namespace scan
