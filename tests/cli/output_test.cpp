/* Files that the program writes: whole or not at all, in place of files only. */
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "program_scan.h"
#include "run_program.h"

namespace {

using testing::AnyOf;
using testing::HasSubstr;

namespace fs = std::filesystem;
using namespace clutter::test;
using Output = ProgramOnAScan;

TEST_F(Output, NothingHalfWrittenStays) {
    // A directory has the name of the second sweep's file.
    const std::string out = directory_.path() + "/out";
    fs::create_directories(out + "/classes_sweep2.csv");
    const Outcome outcome = runProgram("classify " + volume() + " -o " + out + "/classes.csv");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"classes_sweep2.csv"}));
    /* A full device takes the summary. */
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(runProgram("info " + scan_ + " >/dev/full").code, 1);
    }
}

/* A full disk, as a limit on the size of files: the name is that which was asked for. */
TEST_F(Output, WhatCannotBeWrittenIsReportedWithItsReason) {
    const std::string list = directory_.file("points.txt"), out = directory_.file("out");
    std::string points;
    for (int i = 0; i < 200; ++i) {
        points += "3000 5\n";
    }
    writeFile(list, {points.begin(), points.end()});
    const struct {
        std::string arguments, target;
    } kCases[] = {
        {"classify -q " + scan_ + " -o " + out + ".uf", out + ".uf"},
        {"classify -q " + scan_ + " -o " + out + ".csv", out + ".csv"},
        {"classify -q " + scan_ + " -o " + out + ".plv", out + ".plv"},
        {"classify -q " + scan_ + " --plot " + out + ".png", out + ".png"},
        {"process -q --what 1 " + scan_ + " -o " + out + ".uf", out + ".uf"},
        {"process -q --what 1 " + scan_ + " -o " + out + ".plv", out + ".plv"},
        {"process -q --what 1 " + scan_ + " --points " + list + " --prefix " + out,
         out + "_ccl.dat"},
        {"convert " + scan_ + " " + out + ".uf", out + ".uf"},
        {"convert " + scan_ + " " + out + ".plv", out + ".plv"},
        {"convert " + scan_ + " " + out + ".pol", out + ".pol"},
        {"export " + scan_ + " -o " + out + ".csv", out + ".csv"},
        {"export " + scan_ + " -o " + out + ".bin", out + ".bin"},
        {"extract " + scan_ + " " + list + " -o " + out + ".csv", out + ".csv"},
        {"extract " + scan_ + " " + list + " -o " + out + ".dat", out + ".dat"},
    };
    for (const auto& row : kCases) {
        const std::string command = "trap '' XFSZ; ulimit -f 1; " + std::string(kProgram) + " " +
                                    row.arguments + " >" + directory_.file("said") + " 2>&1";
        EXPECT_NE(std::system(command.c_str()), 0) << row.arguments;
        const ByteVector bytes = readFile(directory_.file("said"));
        const std::string said(bytes.begin(), bytes.end());
        EXPECT_THAT(said, HasSubstr("cannot write " + row.target + ": File too large"))
            << row.arguments;
        fs::remove(directory_.file("said"));
        fs::remove(out + "_ccl.dat");
        EXPECT_EQ(filesIn(directory_.path()), (std::vector<std::string>{"points.txt", "scan.uf"}))
            << row.arguments;
    }
    const Outcome ourselves = runProgram("classify -q " + scan_ + " -o " +
                                         directory_.file(std::string(253, 'x') + ".uf"));
    EXPECT_THAT(ourselves.out, HasSubstr("xx.uf: File name too long"));
}

/* A new file takes the place of the old one: its permissions stay, and any name that a directory
 * can hold is one for an output. */
TEST_F(Output, OutputKeepsPermissionsAndTakesAnyName) {
    const std::string secret = directory_.file("secret.csv");
    writeFile(secret, {});
    fs::permissions(secret, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(runProgram("classify -q " + scan_ + " -o " + secret).code, 0);
    EXPECT_GT(fs::file_size(secret), 0u);
    EXPECT_EQ(fs::status(secret).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    const std::string odd = directory_.file("\xff" + std::string(250, 'x') + ".uf");
    EXPECT_EQ(runProgram("classify -q " + scan_ + " -o " + odd).code, 0);
    EXPECT_TRUE(fs::exists(odd));
    EXPECT_EQ(filesIn(directory_.path()).size(), 3u) << "nothing else is left behind";
}

/* Others may write to the directory, too: a name that they could foresee may lead elsewhere. */
TEST_F(Output, NoForeseeableLinkIsWrittenThrough) {
    const std::string victim = directory_.file("victim"), out = directory_.file("out.csv");
    writeFile(victim, {});
    for (const char* name : {".part$$", ".tmp", ".part", "~"}) {
        const std::string link = out + name;
        EXPECT_EQ(runCommand("ln -s victim " + link + "; exec " + kProgram + " classify -q " +
                             scan_ + " -o " + out)
                      .code,
                  0);
        EXPECT_EQ(fs::file_size(victim), 0u) << name;
    }
    EXPECT_GT(fs::file_size(out), 0u);
}

/* With few files that may be open at a time: the result, or a reason and no result. */
TEST_F(Output, TooManyOpenFilesNeverChangeAResult) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the undefined-behaviour sanitizer needs files of its own";
#endif
    const std::string out = directory_.file("out.csv"), packed = scan_ + ".gz";
    ASSERT_EQ(runCommand("gzip -c " + scan_ + " >" + packed).code, 0);
    ASSERT_EQ(runProgram("classify -q " + scan_ + " -o " + out).code, 0);
    const ByteVector right = readFile(out);
    for (const std::string& input : {scan_, packed}) {
        for (int limit = 4; limit < 8; ++limit) {
            fs::remove(out);
            const Outcome outcome = runCommand("ulimit -n " + std::to_string(limit) + "; exec " +
                                               kProgram + " classify -q " + input + " -o " + out);
            if (outcome.code == 0) {
                EXPECT_EQ(readFile(out), right) << limit;
            } else {
                // The loader of shared libraries calls it by its number.
                EXPECT_THAT(outcome.out,
                            AnyOf(HasSubstr("Too many open files"), HasSubstr("Error 24")));
                EXPECT_FALSE(fs::exists(out)) << limit;
            }
        }
    }
}

/* Devices, pipes and links are no files to be replaced. */
TEST_F(Output, OutputTakesThePlaceOfFilesOnly) {
    const std::string pipe = directory_.path() + "/pipe", link = directory_.path() + "/link",
                      file = directory_.path() + "/classes.csv";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(runProgram("classify " + scan_ + " -o " + pipe).code, 1);
    EXPECT_TRUE(fs::is_fifo(pipe));
    writeFile(file, {});
    fs::create_symlink("classes.csv", link + ".csv");
    EXPECT_EQ(runProgram("classify " + scan_ + " -o " + link + ".csv").code, 0);
    EXPECT_TRUE(fs::is_symlink(link + ".csv"));
    EXPECT_GT(fs::file_size(file), 0u);
}

}  // namespace
