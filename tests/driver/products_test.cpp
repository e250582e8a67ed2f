/* Output products: sampled fields, one file each. */
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/scan_context.h"
#include "support/temp_dir.h"

namespace {

using clutter::test::fillField;
using clutter::test::TempDir;

std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::set<std::string> filesIn(const TempDir& directory) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
        names.insert(entry.path().filename().string());
    }
    return names;
}

/* Three gates of 100 m in two rays, at 0 and 180 degrees. */
class Products : public testing::Test {
  protected:
    static std::vector<float> values(float first) {
        std::vector<float> values;
        for (int i = 0; i < 6; ++i) {
            values.push_back(first + static_cast<float>(i) / 3.0f);
        }
        return values;
    }
    static void fill(Cpluvek& record, float first) {
        fillField(record, 3, 2, values(first), 100.0f);
    }
    void save(int what, int npoints = 3) {
        std::string prefix = directory.file("scan1");
        c.Vars2Save(what, prefix.data(), ranges, azimuths, npoints, 1234567890u);
    }

    Crres c;
    TempDir directory;
    float ranges[3] = {0.0f, 150.0f, 9000.0f};
    float azimuths[3] = {1.0f, 178.0f, 5.0f};
};

constexpr char kTime[] = "2009  02  13  23  31  30 ";

TEST_F(Products, EachBitWritesItsRecordToItsFile) {
    struct Case {
        int bit;
        Cpluvek Crres::*record;
        const char* name;
        const char* samples;
    };
    const Case cases[] = {{1, &Crres::ccl, "scan1_ccl.dat", "10.0 11.3 10.7 "},
                          {2, &Crres::zhh, "scan1_zhh.dat", "10.00 11.33 10.67 "},
                          {4, &Crres::zdr, "scan1_zdr.dat", "10.00 11.33 10.67 "},
                          {8, &Crres::rhv, "scan1_rhv.dat", "10.00 11.33 10.67 "},
                          {16, &Crres::pdp, "scan1_pdp.dat", "10.00 11.33 10.67 "},
                          {32, &Crres::vel, "scan1_Vel.dat", "10.00 11.33 10.67 "},
                          {64, &Crres::wid, "scan1_Wid.dat", "10.00 11.33 10.67 "},
                          {128, &Crres::kdp, "scan1_KDP.dat", "10.00 11.33 10.67 "},
                          {256, &Crres::dpdp, "scan1_Dpdp.dat", "10.00 11.33 10.67 "},
                          {512, &Crres::acoef, "scan1_a.dat", "10 11.3333 10.6667 "},
                          {1024, &Crres::bcoef, "scan1_b.dat", "10 11.3333 10.6667 "},
                          {2048, &Crres::alpha, "scan1_alpha.dat", "10 11.3333 10.6667 "},
                          {4096, &Crres::ta, "scan1_TA.dat", "10.00 11.33 10.67 "},
                          {8192, &Crres::pdpc, "scan1_pdpC.dat", "10.00 11.33 10.67 "},
                          {16384, &Crres::ah, "scan1_Ah.dat", "10.00 11.33 10.67 "},
                          {32768, &Crres::rain, "scan1_R.dat", "10.00 11.33 10.67 "}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        Crres fresh;
        TempDir own;
        fill(fresh.*test.record, 10.0f);
        std::string prefix = own.file("scan1");
        fresh.Vars2Save(0xffff, prefix.data(), ranges, azimuths, 3, 1234567890u);
        EXPECT_EQ(filesIn(own), std::set<std::string>{test.name}) << "no other record has data";
        EXPECT_EQ(textOf(own.file(test.name)), std::string(kTime) + test.samples + "\n");
        fill(c.*test.record, 1.0f);
    }
    std::size_t files = 0;
    for (const Case& test : cases) {
        save(test.bit);
        EXPECT_EQ(filesIn(directory).size(), ++files) << test.name;
    }
    TempDir other;
    std::string prefix = other.file("scan1");
    c.Vars2Save(8 | 512, prefix.data(), ranges, azimuths, 3, 0u);
    EXPECT_EQ(filesIn(other), (std::set<std::string>{"scan1_a.dat", "scan1_rhv.dat"}));
}

TEST_F(Products, LaterScansAreAppended) {
    fill(c.zhh, 1.0f);
    save(2);
    fill(c.zhh, 4.0f);
    save(2, 1);
    EXPECT_EQ(textOf(directory.file("scan1_zhh.dat")),
              std::string(kTime) + "1.00 2.33 1.67 \n" + kTime + "4.00 \n");
}

TEST_F(Products, NothingToSampleNoFile) {
    fill(c.zhh, 1.0f);
    save(2, 0);
    save(2, -1);
    std::string prefix = directory.file("scan1");
    c.Vars2Save(2, nullptr, ranges, azimuths, 3, 0u);
    c.Vars2Save(2, prefix.data(), nullptr, azimuths, 3, 0u);
    c.Vars2Save(2, prefix.data(), ranges, nullptr, 3, 0u);
    c.zhh.coordtype = 2;
    save(0xffff);
    EXPECT_EQ(filesIn(directory), std::set<std::string>());
}

TEST_F(Products, PrefixOfAnyLength) {
    fill(c.zhh, 1.0f);
    std::string prefix = directory.path();
    for (int i = 0; i < 1000; ++i) {
        prefix += "/.";
    }
    prefix += "/deep";
    c.Vars2Save(2, prefix.data(), ranges, azimuths, 1, 0u);
    EXPECT_EQ(filesIn(directory), std::set<std::string>{"deep_zhh.dat"});
}

}  // namespace
