/* Metadata in file names of polar data. */
#include <gtest/gtest.h>

#include <string>

#include "clutterclassifier/CThuPolDaFor.h"

namespace {

TEST(PolarNames, EncodeElevationTimeAndSite) {
    struct Row {
        std::string name;
        int elevation;
        unsigned int time;
        int site;
    };
    const unsigned int kAugust = 1186770000;  // 2007-08-10 18:20:00
    const Row rows[] = {
        {"/data/b/200708101820_sidpol_b3.dat", 3, kAugust, 0},
        {"200708101820_augldr_xb", 0, kAugust, 1},
        {"/blob/200708101820augldr", 0, kAugust, 1},
        {"200708101820_augldr", -99, kAugust, 1},
        {"/sidpol/200708101820wetbulbfreezinglevel", 0, kAugust, 0},
        {"/x/200708101820wetbulbfreezinglevel", 0, kAugust, -1},
        {"/x/200708101820_wetbulbfreezinglev_b2", 2, kAugust, -1},
        {"200713101820_sidpol_b3", 3, 0, 0},
        {"sidpol_b3", 3, 0, 0},
        {"tavo-rain-radar_chenies_200708101820_el3.0", 0, kAugust, 2},
        {"tavo-rain-radar_chenies_200708101820", -99, kAugust, 2},
        {"/model/tavo-rain-radar_chenies_20070810182", 0, 0, 2},
        {"/sidpol/other.dat", -1, 0, -1},
        {"", -1, 0, -1},
    };
    CThuPolDaFor polar;
    for (Row row : rows) {
        int elevation = 9, site = 9;
        unsigned int time = 9;
        polar.GetCharacteristics(row.name.data(), elevation, time, site, '/');
        EXPECT_EQ(elevation, row.elevation) << row.name;
        EXPECT_EQ(time, row.time) << row.name;
        EXPECT_EQ(site, row.site) << row.name;
    }
    int elevation = 9, site = 9;
    unsigned int time = 9;
    polar.GetCharacteristics(nullptr, elevation, time, site, '/');
    EXPECT_EQ(elevation, -1);
    EXPECT_EQ(time, 0u);
    EXPECT_EQ(site, -1);
}

}  // namespace
