/* Several inputs: files, folders and patterns, worked on one after another or at the same time. */
#include <gmock/gmock.h>
#include <signal.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "options/did_you_mean.h"
#include "program_scan.h"
#include "report/in_order.h"
#include "run_program.h"

namespace {

using testing::ElementsAre, testing::HasSubstr;

namespace fs = std::filesystem;
using namespace clutter::test;

/* A folder of ten scans of which one is damaged, with a hidden file and a folder in it. */
class Jobs : public ProgramOnAScan {
  protected:
    void SetUp() override {
        ProgramOnAScan::SetUp();
        folder_ = directory_.file("day");
        fs::create_directories(folder_ + "/night");
        for (int i = 0; i < 9; ++i) {
            fs::copy_file(scan_,
                          folder_ + (i < 7 ? "/" : "/night/") + "scan" + std::to_string(i) + ".uf");
        }
        std::ofstream(folder_ + "/bad.uf") << "no radar file at all";
        std::ofstream(folder_ + "/.hidden") << "no radar file either";
    }

    /* What a command prints on one stream, without times. */
    std::string stream(const std::string& arguments, const std::string& redirection) {
        return runCommand(std::string(kProgram) + " " + arguments + " " + redirection +
                          " | grep -v ' time  '")
            .out;
    }

    std::string folder_;
};

TEST_F(Jobs, SeveralAtATimeGiveTheSameBytesInTheSameOrder) {
    const std::string call = "classify " + folder_ + " --certainty --format uf -o ";
    const std::string one = directory_.file("one/");
    const std::string four = directory_.file("four/");
    std::string output = stream(call + one + " -j 1", "2>/dev/null");
    ASSERT_THAT(output, HasSubstr("scan8"));
    std::string other = stream(call + four + " -j 4", "2>/dev/null");
    for (std::size_t at = other.find(four); at != std::string::npos; at = other.find(four)) {
        other.replace(at, four.size(), one);
    }
    EXPECT_EQ(other, output);
    const std::string errors = stream(call + one + " -j 1", "2>&1 >/dev/null");
    EXPECT_THAT(errors, HasSubstr("bad.uf: "));
    EXPECT_EQ(stream(call + four + " -j 4", "2>&1 >/dev/null"), errors);
    ASSERT_EQ(filesIn(one).size(), 9U);
    ASSERT_EQ(filesIn(four), filesIn(one));
    for (const std::string& name : filesIn(one)) {
        EXPECT_EQ(readFile(four + name), readFile(one + name)) << name;
    }
    EXPECT_EQ(runProgram(call + four + " -j 4").code, 1);
    EXPECT_EQ(runProgram("clean -q " + folder_ + " -j 3 -o " + directory_.file("rain/")).code, 1);
    EXPECT_EQ(filesIn(directory_.file("rain/")), filesIn(one));
    EXPECT_EQ(stream("info " + folder_ + " -j 3", "2>/dev/null"),
              stream("info " + folder_ + " -j 1", "2>/dev/null"));
}

TEST_F(Jobs, APatternIsExpandedWhereNoFileHasItsName) {
    const Outcome found = runProgram("info '" + folder_ + "/scan[1-3].uf' " + folder_ + "/night");
    EXPECT_EQ(found.code, 0) << found.out;
    for (const char* name : {"scan1.uf", "scan3.uf", "night/scan7.uf"}) {
        EXPECT_THAT(found.out, HasSubstr(name));
    }
    fs::copy_file(scan_, folder_ + "/scan[1].uf");
    const Outcome itself = runProgram("info '" + folder_ + "/scan[1].uf'");
    EXPECT_THAT(itself.out, HasSubstr("scan[1].uf"));
    fs::create_directory(folder_ + "/empty");
    expectRefusals({{"info '" + folder_ + "/*.h5'", 2, "no files"},
                    {"info " + folder_ + "/empty", 2, "no files"},
                    {"classify -j 0 " + folder_, 2, "--jobs"}});
}

TEST_F(Jobs, AMistypedWordIsAnsweredWithTheClosestOne) {
    expectRefusals({{"clasify " + scan_, 2, "did you mean classify?"},
                    {"inof " + scan_, 2, "did you mean info?"},
                    {"classify --certianty " + scan_, 2, "did you mean --certainty?"},
                    {"classify --inptus=all " + scan_, 2, "did you mean --inputs?"}});
    EXPECT_THAT(runProgram("weather " + scan_).out, testing::Not(HasSubstr("did you mean")));
    EXPECT_EQ(cli::closestName("abc", {"xyz", "abd"}), "abd");
    EXPECT_EQ(cli::closestName("abc", {"abcdef", ""}), "");
}

TEST(InOrder, AWorkerThatIsKilledFailsItsOwnFileOnly) {
    std::vector<std::string> seen;
    cli::runInOrder(
        40, 3,
        [](std::size_t i) -> std::string {
            std::printf("output %zu\n", i);
            if (i == 7 || i == 8) {
                raise(SIGKILL);
            }
            if (i == 20) {
                throw std::runtime_error("is damaged");
            }
            return std::to_string(i);
        },
        [&](std::size_t i, const cli::Finished& finished) {
            ASSERT_EQ(seen.size(), i);
            seen.push_back(finished.result + finished.failure);
            if (finished.failure.empty()) {
                EXPECT_EQ(finished.output, "output " + std::to_string(i) + "\n");
            }
        });
    ASSERT_EQ(seen.size(), 40U);
    EXPECT_EQ(seen[6], "6");
    EXPECT_THAT(seen[7], HasSubstr("Killed"));
    EXPECT_THAT(seen[8], HasSubstr("Killed"));
    EXPECT_EQ(seen[20], "is damaged");
    EXPECT_EQ(seen[39], "39");
}

TEST(InOrder, AWrongCallEndsAllWorkers) {
    EXPECT_THROW(cli::runInOrder(
                     5, 2,
                     [](std::size_t i) -> std::string {
                         if (i == 1) {
                             throw CLI::ValidationError("--sweep", "is not in the file");
                         }
                         return "";
                     },
                     [](std::size_t, const cli::Finished&) {}),
                 CLI::ValidationError);
}

}  // namespace
