/* Names of fields, and which of them is taken. */
#include "scan/class_codes.h"
#include "scan/fields/field_choice.h"
#include "scan/fields/field_map.h"
#include "scan/fields/role.h"
#include "scan/fields/value_summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

using testing::HasSubstr;

using scan::Role;

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

scan::Sweep sweepOf(const std::vector<scan::Field>& fields) {
    scan::Sweep sweep;
    sweep.nrays = 1;
    sweep.ngates = 4;
    sweep.fields = fields;
    return sweep;
}

scan::Field reflectivity(const char* name) {
    return {name, "", {10, 20, 30, 40}};
}

std::string chosen(const scan::FieldChoice& choice, Role role) {
    return choice[role] ? choice[role]->name : "";
}

TEST(Roles, NamesOfManySystemsAreKnown) {
    struct Case {
        const char* name;
        Role role;
    };
    const Case cases[] = {
        {"DZ", Role::kZhh},    {"Zh", Role::kZhh},  {"DBTH", Role::kZhh},  {"ZD", Role::kZdr},
        {"Zdr", Role::kZdr},   {"PH", Role::kPdp},  {"Phidp", Role::kPdp}, {"PHIDP", Role::kPdp},
        {"RhoHV", Role::kRhv}, {"RH", Role::kRhv},  {"VR", Role::kVel},    {"V", Role::kVel},
        {"SW", Role::kWid},    {"LDR", Role::kLdr}, {"LR", Role::kLdr},    {"CMAP", Role::kPdf},
        {"KD", Role::kKdp},    {"CM", Role::kNone}, {"SQ", Role::kNone},   {"", Role::kNone},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(scan::roleOfName(c.name), c.role) << c.name;
    }
}

TEST(Roles, UnfilteredReflectivityComesFirst) {
    struct Case {
        std::vector<const char*> names;
        const char* taken;
    };
    const Case cases[] = {
        {{"CZ", "DZ", "ZT"}, "ZT"}, {{"CZ", "DZ"}, "DZ"}, {{"Zv", "Zh"}, "Zh"},
        {{"DBZH", "DBTH"}, "DBTH"}, {{"CZ"}, "CZ"},       {{"SQ"}, ""},
    };
    for (const Case& c : cases) {
        std::vector<scan::Field> fields;
        for (const char* name : c.names) {
            fields.push_back(reflectivity(name));
        }
        EXPECT_EQ(chosen(scan::chooseFields(sweepOf(fields), {}), Role::kZhh), c.taken);
    }
}

TEST(Roles, FieldsThatSayNothingGiveWay) {
    const scan::Field empty{"ZT", "", {kMissing, kMissing, kMissing, kMissing}};
    const scan::Field constant{"ZT", "", {0, 0, 0, kMissing}};
    const scan::Field impossible{"ZT", "", {10, 500, 600, 700}};
    for (const scan::Field& first : {empty, constant, impossible}) {
        const scan::Sweep sweep = sweepOf({first, reflectivity("DZ")});
        const scan::FieldChoice choice = scan::chooseFields(sweep, {});
        EXPECT_EQ(chosen(choice, Role::kZhh), "DZ");
        EXPECT_THAT(choice.notes[0], HasSubstr("ZT"));
    }
    const scan::Sweep alone = sweepOf({impossible});
    EXPECT_EQ(chosen(scan::chooseFields(alone, {}), Role::kZhh), "ZT");
    const scan::Sweep nothing = sweepOf({empty});
    EXPECT_EQ(chosen(scan::chooseFields(nothing, {}), Role::kZhh), "");
}

TEST(Roles, TheMapOverridesNames) {
    const scan::Sweep sweep = sweepOf({reflectivity("ZT"), reflectivity("DZ"), reflectivity("XY")});
    struct Case {
        const char* map;
        const char* zhh;
        const char* zdr;
    };
    const Case cases[] = {
        {"", "ZT", ""},         {"DZ=zhh", "DZ", ""},   {"dz=ZHH", "DZ", ""},
        {"ZT=none", "DZ", ""},  {"XY=Zdr", "ZT", "XY"}, {"ZT=zdr,XY=zhh", "XY", "ZT"},
        {"ZT=zdr", "DZ", "ZT"},
    };
    for (const Case& c : cases) {
        const scan::FieldChoice choice = scan::chooseFields(sweep, scan::parseFieldMap(c.map));
        EXPECT_EQ(chosen(choice, Role::kZhh), c.zhh) << c.map;
        EXPECT_EQ(chosen(choice, Role::kZdr), c.zdr) << c.map;
    }
    EXPECT_THROW(scan::chooseFields(sweep, scan::parseFieldMap("AB=zhh")), std::runtime_error);
    for (const char* bad : {"ZT", "=zhh", "ZT=", "ZT=foo", "ZT=zhh,DZ", "ZT=zhh,DZ=zhh",
                            "ZT=zhh,DZ=DBZH", "DZ=none,ZT=zhh,DZ=zhh", "DZ=zhh,DZ=zhh"}) {
        EXPECT_THROW(scan::parseFieldMap(bad), std::invalid_argument) << bad;
    }
    EXPECT_EQ(scan::parseFieldMap("ZT=none,DZ=none").size(), 2u);
    EXPECT_THROW(scan::chooseFields(sweep, scan::parseFieldMap("XY=zhh,xy=zdr")),
                 std::runtime_error);
}

TEST(Roles, AVelocityBesideAFilteredReflectivityIsFilteredToo) {
    const scan::Field before{"ZT", "", {10, 20, 30, 40}};
    const scan::Field after{"DZ", "", {10, kMissing, 12, 40}};
    const scan::Field same{"DZ", "", {10, 20, 30, 40}};
    const scan::Field velocity{"VR", "", {1, 2, 3, 4}};
    const scan::Field unfiltered{"VT", "", {1, 2, 3, 4}};
    struct Case {
        std::vector<scan::Field> fields;
        const char* map;
        bool filtered;
    };
    const Case cases[] = {
        {{before, after, velocity}, "", true},
        {{before, same, velocity}, "", false},
        {{before, velocity}, "", false},
        {{after, velocity}, "", false},
        {{before, after, unfiltered}, "", false},
        {{before, after, velocity}, "VR=vel", false},
        {{before, after, velocity}, "DZ=zhh", false},
        {{before, after}, "", false},
    };
    for (const Case& c : cases) {
        const scan::Sweep sweep = sweepOf(c.fields);
        const scan::FieldMap map = scan::parseFieldMap(c.map);
        EXPECT_EQ(scan::isVelocityFiltered(sweep, scan::chooseFields(sweep, map), map), c.filtered)
            << &c - cases;
    }
}

TEST(Roles, ASummaryLeavesOutWhatIsMissing) {
    const scan::ValueSummary summary = scan::summarise({3, kMissing, -1, 7, 500}, Role::kZhh);
    EXPECT_EQ(summary.count, 4);
    EXPECT_EQ(summary.lowest, -1);
    EXPECT_EQ(summary.highest, 500);
    EXPECT_DOUBLE_EQ(summary.shareInRange, 0.75);
    EXPECT_FALSE(summary.constant());
    EXPECT_TRUE(scan::summarise({2, kMissing, 2}, Role::kZdr).constant());
    EXPECT_TRUE(scan::summarise({2}, Role::kZdr).constant());
    EXPECT_EQ(scan::summarise({kMissing}, Role::kZdr).count, 0);
}

TEST(Roles, ASummaryOfAnyNumberOfValuesIsThatOfALoop) {
    std::vector<float> values;
    for (int count = 0; count < 70; ++count) {
        long inside = 0;
        for (const float value : values) {
            inside += value >= -12 && value <= 15;
        }
        const scan::ValueSummary summary = scan::summarise(values, Role::kZdr);
        ASSERT_EQ(summary.count, count);
        if (count > 0) {
            const auto ends = std::minmax_element(values.begin(), values.end());
            EXPECT_EQ(summary.lowest, *ends.first) << count;
            EXPECT_EQ(summary.highest, *ends.second) << count;
            EXPECT_EQ(summary.shareInRange, static_cast<double>(inside) / count) << count;
        }
        values.push_back(static_cast<float>((count * 37) % 53 - 26) * 0.7F);
    }
}

TEST(Roles, TheMedianIsThatOfTheSortedFiniteValues) {
    constexpr float kInfinite = std::numeric_limits<float>::infinity();
    constexpr float kLargest = std::numeric_limits<float>::max();
    EXPECT_EQ(scan::medianOf({}), 0);
    EXPECT_EQ(scan::medianOf({kMissing, kInfinite, -kInfinite}), 0);
    EXPECT_EQ(scan::medianOf({3, kMissing, -1, 7, kInfinite, 500}), 7);
    EXPECT_EQ(scan::medianOf({-kLargest, -1e-40F, 0.0F, -0.0F, 1e-40F, kLargest}), 0);
    EXPECT_FALSE(std::signbit(scan::medianOf({-0.0F})));
    std::vector<float> values;
    for (int i = 0; i < 1001; ++i) {
        values.push_back(std::sin(static_cast<float>(i * i)) * (i % 7 == 0 ? 1e-3F : 40.0F));
        std::vector<float> sorted = values;
        std::sort(sorted.begin(), sorted.end());
        ASSERT_EQ(scan::medianOf(values), sorted[sorted.size() / 2]) << i;
    }
}

TEST(Roles, AClassFieldIsKnownByNameAndValues) {
    EXPECT_TRUE(scan::isClassField({"CCl", "", {0, 3, 5, kMissing}}));
    EXPECT_TRUE(scan::isClassField({"CC", "", {5}}));
    EXPECT_FALSE(scan::isClassField({"CC", "", {0.98F, 0}}));  // a correlation
    EXPECT_FALSE(scan::isClassField({"DZ", "", {0, 3, 5}}));
    EXPECT_FALSE(scan::isClassField({"CCl", "", {1}}));
    EXPECT_FALSE(scan::isClassField({"CC", "", {kMissing, kMissing}}));
}

}  // namespace
