/* Which inputs take part, what is said of the others, and where the calibration comes from. */
#include "scan/classes/classify_sweep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
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
    for (const std::string& name : names) {
        sweep.fields.push_back({name, "", {0.1f, 0.2f, 0.3f, 0.4f}});
    }
    return sweep;
}

TEST(ClassifySweep, TakesTheInputsThatExistAndNamesThoseThatWereAskedFor) {
    const struct {
        std::vector<std::string> fields;
        const char* inputs;  // none are asked for when it is null
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
        if (row.inputs) {
            options.mask = parseInputs(row.inputs);
        }
        const Sweep sweep = sweepOf(row.fields);
        const ClassificationPlan plan = planClassification({}, sweep, options);
        EXPECT_EQ(plan.mask, row.mask);
        std::vector<std::string> notes;
        if (*row.absent) {
            notes.push_back(std::string("asked for, but not in the file:") + row.absent);
        }
        EXPECT_EQ(plan.notes, notes) << row.mask;
    }
    EXPECT_TRUE(takesPart(Role::kZdr, 2) && takesPart(Role::kZhh, 2));
    EXPECT_FALSE(takesPart(Role::kZdr, 1) || takesPart(Role::kVel, 2));
    EXPECT_EQ(describeInputs(511), "textures of zhh zdr pdp rhv; vel ldr pdf rhv wid");
    EXPECT_EQ(describeInputs(128), "rhv");
    EXPECT_EQ(describeInputs(2), "textures of zdr");
}

/* Rough gates among calm ones: the neighbours outvote a single one, and isolated ones go. */
TEST(ClassifySweep, AveragesOverTheNeighbourhoodAndExplainsItself) {
    Sweep sweep = sweepOf({"DZ"});
    sweep.nrays = 9;
    sweep.ngates = 40;
    std::vector<float>& values = sweep.fields[0].values;
    values.assign(360, 40.0f);
    values[4 * 40 + 20] = 60.0f;
    sweep.azimuthDeg = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    sweep.elevationDeg.assign(9, 1.0);
    ClassifyOptions options;
    options.membership = kMembershipDirectory;
    options.noise.radarConstantDb = 60;
    const ClassifiedSweep averaged = classifySweep({}, sweep, options);
    options.neighbourhood = {};
    const ClassifiedSweep alone = classifySweep({}, sweep, options);
    EXPECT_EQ(alone.groundClutter, 15) << "every window that holds the gate";
    EXPECT_LT(averaged.groundClutter, 15);
    EXPECT_TRUE(certaintyFields(averaged).empty());
    options.certainty = true;
    const ClassifiedSweep certain = classifySweep({}, sweep, options);
    EXPECT_EQ(certain.classes, alone.classes);
    const std::vector<Field> fields = certaintyFields(certain);
    ASSERT_EQ(fields.size(), 2u);
    const ExplainedGate why = explainGate({}, sweep, options, 4, 20);
    EXPECT_EQ(why.explanation.gate_class, CLUTTER_GROUND);
    EXPECT_EQ(static_cast<float>(why.explanation.margin), fields[1].values[4 * 40 + 20]);
    EXPECT_LT(fields[0].values[4 * 40 + 20], 0.5f);
    EXPECT_EQ(why.explanation.inputs, static_cast<unsigned>(CLUTTER_ZHH_TEXTURE));

    for (int g = 0; g < 7; ++g) {
        values[static_cast<std::size_t>(g)] = std::numeric_limits<float>::quiet_NaN();
    }
    values[39] = -60.0f;
    const ClassifiedSweep counted = classifySweep({}, sweep, options);
    EXPECT_EQ(counted.noise, 8);
    EXPECT_EQ(counted.withoutValue, 7);
    EXPECT_EQ(counted.groundClutter, 15);
    EXPECT_EQ(counted.precipitation, 360 - 8 - 15);
    EXPECT_EQ(counted.seaClutter + counted.turbineClutter, 0);
    EXPECT_EQ(counted.gates(), 360);

    options.membership = "/nowhere";
    EXPECT_THROW(classifySweep({}, sweep, options), std::runtime_error)
        << "no class without tables";
}

/* Noise by a field of ratios; weak echo, whose correlation is as rough as that of clutter. */
TEST(ClassifySweep, HidesNoiseAndThePolarimetryOfWeakEcho) {
    Sweep sweep = sweepOf({"DZ", "RH", "SNRH", "DR", "PH"});
    sweep.nrays = 9;
    sweep.ngates = 40;
    sweep.azimuthDeg = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    sweep.elevationDeg.assign(9, 1.0);
    const auto fill = [&](std::size_t field, auto value) {
        sweep.fields[field].values.clear();
        for (int i = 0; i < 360; ++i) {
            sweep.fields[field].values.push_back(static_cast<float>(value(i)));
        }
    };
    ClassifyOptions options;
    options.membership = kMembershipDirectory;
    fill(0, [](int i) { return 20 * std::log10(std::max(i % 40, 1)) + i % 5; });
    fill(1, [](int i) { return i % 2 == 0 ? 0.2 : 1; });
    fill(3, [](int i) { return i % 2 == 0 ? -4 : 4; });
    fill(4, [](int i) { return i % 2 == 0 ? 0 : 100; });
    const auto clutterAt = [&](double ratio) {
        fill(2, [ratio](int i) { return i % 5 + ratio; });
        return classifySweep({}, sweep, options).groundClutter;
    };
    EXPECT_GT(clutterAt(30), clutterAt(3) + 100);
    fill(2, [](int i) { return i % 5 - 2; });
    const ClassifiedSweep noisy = classifySweep({}, sweep, options);
    EXPECT_EQ(noisy.noise, 360);
    EXPECT_EQ(noisy.withoutValue, 0);
}

}  // namespace
}  // namespace scan
