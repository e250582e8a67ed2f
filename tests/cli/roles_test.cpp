/* Names of fields, and which of them is taken. */
#include "roles.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using cli::Role;

constexpr float kMissing = std::numeric_limits<float>::quiet_NaN();

cli::Sweep sweepOf(const std::vector<cli::Field>& fields) {
    cli::Sweep sweep;
    sweep.nrays = 1;
    sweep.ngates = 4;
    sweep.fields = fields;
    return sweep;
}

cli::Field reflectivity(const char* name) {
    return {name, "", {10, 20, 30, 40}};
}

std::string chosen(const cli::FieldChoice& choice, Role role) {
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
    for (const Case& c : cases) EXPECT_EQ(cli::roleOfName(c.name), c.role) << c.name;
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
        std::vector<cli::Field> fields;
        for (const char* name : c.names) fields.push_back(reflectivity(name));
        EXPECT_EQ(chosen(cli::chooseFields(sweepOf(fields), {}), Role::kZhh), c.taken);
    }
}

TEST(Roles, FieldsThatSayNothingGiveWay) {
    const cli::Field empty{"ZT", "", {kMissing, kMissing, kMissing, kMissing}};
    const cli::Field constant{"ZT", "", {0, 0, 0, kMissing}};
    const cli::Field impossible{"ZT", "", {10, 500, 600, 700}};
    for (const cli::Field& first : {empty, constant, impossible}) {
        const cli::Sweep sweep = sweepOf({first, reflectivity("DZ")});
        const cli::FieldChoice choice = cli::chooseFields(sweep, {});
        EXPECT_EQ(chosen(choice, Role::kZhh), "DZ");
        EXPECT_NE(choice.notes[0].find("ZT"), std::string::npos) << choice.notes[0];
    }
    const cli::Sweep alone = sweepOf({impossible});
    EXPECT_EQ(chosen(cli::chooseFields(alone, {}), Role::kZhh), "ZT");
    const cli::Sweep nothing = sweepOf({empty});
    EXPECT_EQ(chosen(cli::chooseFields(nothing, {}), Role::kZhh), "");
}

TEST(Roles, TheMapOverridesNames) {
    const cli::Sweep sweep = sweepOf({reflectivity("ZT"), reflectivity("DZ"), reflectivity("XY")});
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
        const cli::FieldChoice choice = cli::chooseFields(sweep, cli::parseFieldMap(c.map));
        EXPECT_EQ(chosen(choice, Role::kZhh), c.zhh) << c.map;
        EXPECT_EQ(chosen(choice, Role::kZdr), c.zdr) << c.map;
    }
    EXPECT_THROW(cli::chooseFields(sweep, cli::parseFieldMap("AB=zhh")), std::runtime_error);
    for (const char* bad : {"ZT", "=zhh", "ZT=", "ZT=foo", "ZT=zhh,DZ"})
        EXPECT_THROW(cli::parseFieldMap(bad), std::invalid_argument) << bad;
}

TEST(Roles, AVelocityBesideAFilteredReflectivityIsFilteredToo) {
    const cli::Field before{"ZT", "", {10, 20, 30, 40}};
    const cli::Field after{"DZ", "", {10, kMissing, 12, 40}};
    const cli::Field same{"DZ", "", {10, 20, 30, 40}};
    const cli::Field velocity{"VR", "", {1, 2, 3, 4}};
    const cli::Field unfiltered{"VT", "", {1, 2, 3, 4}};
    struct Case {
        std::vector<cli::Field> fields;
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
        const cli::Sweep sweep = sweepOf(c.fields);
        const cli::FieldMap map = cli::parseFieldMap(c.map);
        EXPECT_EQ(cli::isVelocityFiltered(sweep, cli::chooseFields(sweep, map), map), c.filtered)
            << &c - cases;
    }
}

TEST(Roles, ASummaryLeavesOutWhatIsMissing) {
    const cli::ValueSummary summary = cli::summarise({3, kMissing, -1, 7, 500}, Role::kZhh);
    EXPECT_EQ(summary.count, 4);
    EXPECT_EQ(summary.lowest, -1);
    EXPECT_EQ(summary.median, 7);
    EXPECT_EQ(summary.highest, 500);
    EXPECT_DOUBLE_EQ(summary.shareInRange, 0.75);
    EXPECT_FALSE(summary.constant());
    EXPECT_TRUE(cli::summarise({2, kMissing, 2}, Role::kZdr).constant());
    EXPECT_EQ(cli::summarise({kMissing}, Role::kZdr).count, 0);
}

}  // namespace
