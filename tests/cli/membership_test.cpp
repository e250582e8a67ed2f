// The command `membership`: exit codes, refusals, and a directory that the program can use.
#include <gmock/gmock.h>

#include <filesystem>

#include "program_scan.h"
#include "run_program.h"
#include "support/membership_files.h"

namespace {

using namespace clutter::test;
using testing::HasSubstr;
using Membership = ProgramOnAScan;

TEST_F(Membership, CheckExitsWithOneWhereThereIsAnError) {
    const Outcome sound = runProgram(std::string("membership check ") + kMembershipDirectory);
    EXPECT_EQ(sound.code, 0);
    EXPECT_THAT(sound.out, HasSubstr("32 files, 0 errors, 0 warnings"));
    std::filesystem::create_directory(directory_.file("own"));
    writeText(directory_.file("own/cal_mf_sZhh_clutter.dat"), "0 .1\n4 2\n");
    const Outcome damaged = runProgram("membership check " + directory_.file("own"));
    EXPECT_EQ(damaged.code, 1);
    EXPECT_THAT(damaged.out, HasSubstr("cal_mf_sZhh_clutter.dat: line 2: error: the degree"));
    EXPECT_THAT(damaged.out, HasSubstr("1 files, 2 errors, 0 warnings"));
}

TEST_F(Membership, TrainWritesADirectoryThatClassifies) {
    const std::string out = directory_.file("mine");
    const std::string train = "membership train " + volume() + " " + scan_ +
                              " --label 'RH<0.97' --inputs zhh-texture,zdr-texture -o " + out;
    const Outcome outcome = runProgram(train);
    ASSERT_EQ(outcome.code, 0) << outcome.out;
    EXPECT_THAT(outcome.out, HasSubstr("wrote 4 tables"));
    EXPECT_EQ(runProgram("membership check " + out).code, 0);
    EXPECT_EQ(runProgram("classify -q --membership " + out + " " + scan_).code, 0)
        << "with the other tables as they were";
    expectRefusals({
        {train, 1, "exists and is not an empty directory"},
        {"membership train " + scan_ + " --label 'RH<0.97' -o " + out + "2", 1, "942 of clutter"},
        {"membership train " + scan_ + " --label 'RH<' -o " + out + "2", 2, "is not a number"},
        {"membership train " + scan_ + " --label XX -o " + out + "2", 1, "XX"},
        {"membership", 2, "subcommand"},
        {"membership plot " + out + " -o sheet.txt", 2, "must end in .png"},
        {"membership plot /nowhere -o " + out + ".png", 1, "holds no pair"},
        {"membership check /nowhere", 1, "No such file"},
    });
    EXPECT_FALSE(std::filesystem::exists(out + "2"));
    const std::string sheet = directory_.file("sheet.svg");
    ASSERT_EQ(
        runProgram("membership plot " + out + " " + kMembershipDirectory + " -o " + sheet).code, 0);
    EXPECT_GT(std::filesystem::file_size(sheet), 20000u);
}

}  // namespace
