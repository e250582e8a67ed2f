// Tools for membership functions: what a check finds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>

#include "clutterclassifier/classifier.hpp"
#include "scan/membership/check.h"
#include "scan/membership/pairs.h"
#include "support/directories.h"
#include "support/membership_files.h"
#include "support/temp_dir.h"

namespace {

using namespace clutter::test;
using testing::HasSubstr;

/* A pair of one quantity that is as it should be. */
void writePair(const TempDir& directory) {
    writeText(directory.file("cal_mf_sZhh_clutter.dat"), "0 .1\n4 .9\n100 .5\n");
    writeText(directory.file("cal_mf_sZhh_precipi.dat"), "0 .9\n4 .1\n100 .5\n");
}

TEST(MembershipCheck, PassesTheShippedSetAndAPairOfOneQuantity) {
    const scan::MembershipCheck shipped = scan::checkMembership(kMembershipDirectory);
    EXPECT_EQ(shipped.files, 32);
    EXPECT_TRUE(shipped.findings.empty());
    const TempDir directory;
    writePair(directory);
    writeText(directory.file("README"), "not a table");
    EXPECT_TRUE(scan::checkMembership(directory.path()).findings.empty());
}

/* One thing wrong a row. The library refuses what it cannot use; the check says more. */
TEST(MembershipCheck, SaysWhichFileAndLineAndWhatIsWrong) {
    const struct {
        const char* contents;  // of the table of precipitation; null: none
        int line;
        bool isError;
        bool isRefused;  // by the library too
        const char* text;
    } cases[] = {
        {"0 .9\n4 .1\n100 .4\n", 3, true, false, "ends in another degree than its twin"},
        {"0 .9\n4 1.1\n100 .5\n", 2, true, false, "the degree is not within 0 and 1"},
        {"0 .9\n4 -.1\n100 .5\n", 2, true, true, "the degree is not within 0 and 1"},
        {"0 .9\n4 .1\n3 .5\n", 3, true, true, "the abscissa is below the one before"},
        {"0 .9\n4 .1\n\n100", 4, true, true, "an abscissa without a degree"},
        {"0 .9\n4 .1 1OO .5\n", 2, true, true, "\"1OO\" is not a finite number"},
        {"0 .9\n4 nan\n", 2, true, true, "\"nan\" is not a finite number"},
        {"", 0, true, true, "holds no points"},
        {nullptr, 0, true, true, "its twin cal_mf_sZhh_precipi.dat is missing"},
        {"0 .9\n4 0\n100 .5\n", 2, false, false, "overrules all other inputs"},
        {"0 .1\n2 .5\n4 .9\n100 .5\n", 0, false, false, "it never decides"},
    };
    for (const auto& c : cases) {
        const TempDir directory;
        writePair(directory);
        const std::string victim = directory.file("cal_mf_sZhh_precipi.dat");
        std::filesystem::remove(victim);
        if (c.contents != nullptr) {
            writeText(victim, c.contents);
        }
        const scan::MembershipCheck check = scan::checkMembership(directory.path());
        ASSERT_EQ(check.findings.size(), 1u) << c.text;
        EXPECT_EQ(check.findings[0].line, c.line) << c.text;
        EXPECT_THAT(check.findings[0].text, HasSubstr(c.text));
        EXPECT_EQ(check.findings[0].isError, c.isError) << c.text;
        EXPECT_EQ(check.errors(), c.isError ? 1 : 0);
        const auto open = [&] { clutter::Classifier(directory.path(), CLUTTER_ZHH_TEXTURE); };
        if (c.isRefused) {
            EXPECT_THROW(open(), clutter::Error) << c.text;
        } else {
            EXPECT_NO_THROW(open()) << c.text;
        }
    }
}

TEST(MembershipCheck, LooksAtTheDirectoryAsAWhole) {
    const TempDir directory;
    EXPECT_EQ(scan::checkMembership(directory.path()).errors(), 1) << "no files";
    EXPECT_THROW(scan::checkMembership(directory.file("nowhere")), std::runtime_error);
    writePair(directory);
    writeText(directory.file("cal_mf_sZhh_seaclut.dat"), "0 .2 100 .5");
    writeText(directory.file("cal_mf_sZHH_clutter.dat"), "0 .2 100 .5");
    std::filesystem::create_directory(directory.file("cal_mf_LDR_clutter.dat"));
    std::string all;
    const scan::MembershipCheck check = scan::checkMembership(directory.path());
    for (const scan::Finding& finding : check.findings) {
        all += finding.file + ": " + finding.text + "\n";
    }
    EXPECT_THAT(all,
                HasSubstr("cal_mf_sZHH_clutter.dat: is not a name that the library looks for"));
    EXPECT_THAT(all, HasSubstr("cal_mf_sZhh_turclut.dat is missing"));
    EXPECT_THAT(all, HasSubstr("cal_mf_LDR_clutter.dat: is not a regular file"));
    EXPECT_EQ(check.errors(), 3);
}

TEST(Pairs, AreThoseThatAreWholeAndDecideSomewhere) {
    EXPECT_EQ(scan::readPairs(kMembershipDirectory).size(), 8u);
    const TempDir directory;
    EXPECT_THROW(scan::readPairs(directory.path()), std::runtime_error);
    writeText(directory.file("cal_mf_sZhh_clutter.dat"), "-9 .5 0 .1 4 .9 100 .5 1e6 .5");
    writeText(directory.file("cal_mf_sZhh_precipi.dat"), "-9 .5 0 .9 4 .1 50 .2 100 .5 1e6 .5");
    writeText(directory.file("cal_mf_Vel_precipi.dat"), "0 .5 1 .9");
    const auto pairs = scan::readPairs(directory.path());
    ASSERT_EQ(pairs.size(), 1u);
    EXPECT_EQ(scan::decidingRange(pairs[0]), std::pair(0.0, 50.0));
    EXPECT_DOUBLE_EQ(scan::degreeAt(pairs[0].clutter, 2), 0.5);
    EXPECT_DOUBLE_EQ(scan::degreeAt(pairs[0].clutter, 4), 0.9);
    EXPECT_DOUBLE_EQ(scan::degreeAt(pairs[0].clutter, -1e9), 0.5);
    writeText(directory.file("cal_mf_Vel_clutter.dat"), "0 .5\n1 x");
    EXPECT_THROW(scan::readPairs(directory.path()), std::runtime_error);
}

}  // namespace
