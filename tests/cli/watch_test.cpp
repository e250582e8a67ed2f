/* The command watch, while it is killed and the disk fills. */
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "program_scan.h"
#include "run_program.h"

namespace {

using testing::HasSubstr;

namespace fs = std::filesystem;
using namespace clutter::test;
using namespace std::chrono_literals;

/* A file system of 64 MB of its own on a folder, if the system allows it. */
bool mountSmallDisk(const std::string& folder) {
    const int kinds = CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
    return unshare(kinds) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", folder.c_str(), "tmpfs", 0, "size=64m") == 0;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Watch : public ProgramOnAScan {
  protected:
    void SetUp() override {
        ProgramOnAScan::SetUp();
        fs::create_directories(in_);
        fs::create_directories(out_);
    }
    void TearDown() override {
        end(SIGKILL);
        umount2(out_.c_str(), MNT_DETACH);
        ProgramOnAScan::TearDown();
    }

    void begin(std::vector<std::string> more = {"--json"}) {
        const std::string log = directory_.file("log");
        process_ = fork();
        if (process_ == 0) {
            const int file = open(log.c_str(), O_CREAT | O_APPEND | O_WRONLY, 0600);
            dup2(file, STDOUT_FILENO);
            dup2(file, STDERR_FILENO);
            std::vector<char*> words;
            more.insert(more.begin(), {kProgram, "watch", in_, "-o", out_});
            for (std::string& word : more) {
                words.push_back(word.data());
            }
            words.push_back(nullptr);
            execv(kProgram, words.data());
            _exit(127);
        }
    }

    /* Sends a signal to the program; its exit code. */
    int end(int number) {
        if (process_ <= 0) {
            return -1;
        }
        kill(process_, number);
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::size_t outputs() const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator(out_)) {
            count += entry.path().extension() == ".uf" ? 1 : 0;
        }
        return count;
    }

    static bool waitFor(const std::function<bool()>& condition) {
        for (int tries = 0; tries < 6000; ++tries) {
            if (condition()) {
                return true;
            }
            std::this_thread::sleep_for(50ms);
        }
        return false;
    }

    /* Written in two pieces, or under another name that is then changed. */
    void arrive(int number) const {
        const std::string name = in_ + "/scan" + std::to_string(number) + ".uf";
        const std::string begun = number % 2 == 0 ? name : in_ + "/.begun";
        {
            std::string bytes = contentOf(scan_);
            for (std::size_t at = 0; at + 8 < bytes.size();) {  // the sweep number of every ray
                bytes[at + 4 + 18] = static_cast<char>(number >> 8);
                bytes[at + 4 + 19] = static_cast<char>(number);
                const auto byte = [&](std::size_t i) {
                    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at + i]));
                };
                at += 8 + (byte(2) << 8) + byte(3);
            }
            std::ofstream file(begun, std::ios::binary);
            file.write(bytes.data(), 1000).flush();
            std::this_thread::sleep_for(1ms);
            file.write(bytes.data() + 1000, static_cast<std::streamsize>(bytes.size()) - 1000);
        }
        if (begun != name) {
            fs::rename(begun, name);
        }
    }

    const std::string in_ = directory_.file("in"), out_ = directory_.file("out");
    pid_t process_ = -1;
};

TEST_F(Watch, KilledAndOutOfRoomItWritesEachOutputOnce) {
    constexpr int kFiles = 200;
    const bool small = mountSmallDisk(out_);
    begin();
    std::atomic<bool> filled = false;
    std::thread arrivals([&] {
        for (int i = 1; i <= kFiles; ++i) {
            while (i == 150 && !filled) {
                std::this_thread::sleep_for(5ms);
            }
            arrive(i);
            if (i == 50) {
                std::ofstream(in_ + "/bad.uf") << "no radar file at all";
            }
            std::this_thread::sleep_for(5ms);
        }
    });
    for (const std::size_t count : {20U, 40U, 60U}) {
        EXPECT_TRUE(waitFor([&] { return outputs() >= count; }));
        end(SIGKILL);
        begin();
    }
    if (small) {
        const std::string filler = out_ + "/filler";
        std::ofstream file(filler, std::ios::binary);
        while (file.write(std::string(4096, 'x').data(), 4096).flush()) {
        }
        filled = true;
        EXPECT_TRUE(waitFor([&] {
            return contentOf(directory_.file("log")).find("the disk is full") != std::string::npos;
        }));
        fs::remove(filler);
    }
    filled = true;
    arrivals.join();
    EXPECT_TRUE(waitFor([&] { return outputs() == kFiles; })) << outputs();
    EXPECT_TRUE(waitFor([&] { return fs::exists(out_ + "/failures.csv"); }));
    EXPECT_EQ(end(SIGTERM), 0);

    const std::string log = contentOf(directory_.file("log"));
    const std::string apart = directory_.file("apart/");
    ASSERT_EQ(runProgram("classify -q " + in_ + "/scan*.uf -o " + apart).code, 0);
    for (int i = 1; i <= kFiles; ++i) {
        const std::string name = "scan" + std::to_string(i) + ".uf";
        EXPECT_EQ(contentOf(out_ + "/" + name), contentOf(apart + name)) << name;
        const std::size_t first = log.find("\"" + name + "\"");
        if (first != std::string::npos) {
            EXPECT_EQ(log.find("\"" + name + "\"", first + 1), std::string::npos) << name;
        }
    }
    std::set<std::string> others;
    for (const auto& entry : fs::directory_iterator(out_)) {
        if (entry.path().extension() != ".uf") {
            others.insert(entry.path().filename().string());
        }
    }
    EXPECT_EQ(others, (std::set<std::string>{".watch-lock", "failures.csv", "status.prom"}));
    const std::string failures = contentOf(out_ + "/failures.csv");
    EXPECT_THAT(failures, HasSubstr("\"bad.uf\",20,"));
    EXPECT_EQ(std::count(failures.begin(), failures.end(), '\n'), 2) << failures;
    EXPECT_THAT(contentOf(out_ + "/status.prom"),
                HasSubstr("# TYPE clutterclassifier_watch_files_total counter\n"));
}

TEST_F(Watch, AFileThatComesAgainIsWorkedOnAgain) {
    begin({"--clean", "--format", "h5", "-q"});
    const std::string output = out_ + "/scan.uf.h5";
    fs::copy_file(scan_, in_ + "/scan.uf");
    ASSERT_TRUE(waitFor([&] { return fs::exists(output); }));
    std::ofstream(in_ + "/scan.uf") << "damaged now";
    ASSERT_TRUE(waitFor([&] { return fs::exists(out_ + "/failures.csv"); }));
    fs::remove(output);
    fs::copy_file(scan_, in_ + "/scan.uf", fs::copy_options::overwrite_existing);
    EXPECT_TRUE(waitFor([&] { return fs::exists(output); }));
    EXPECT_EQ(end(SIGTERM), 0);
}

TEST_F(Watch, TheServiceManagerHearsOfTheStartAndOfTheEnd) {
    const std::string name = directory_.file("notify");
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(name.size(), sizeof address.sun_path);
    name.copy(address.sun_path, name.size());
    const int messages = socket(AF_UNIX, SOCK_DGRAM, 0);
    ASSERT_EQ(bind(messages, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
    begin();
    unsetenv("NOTIFY_SOCKET");
    char text[200] = "";
    EXPECT_GT(recv(messages, text, sizeof text - 1, 0), 0);
    EXPECT_STREQ(text, "READY=1");
    EXPECT_EQ(end(SIGTERM), 0);
    std::string last;
    for (ssize_t count = 0; (count = recv(messages, text, sizeof text, MSG_DONTWAIT)) > 0;) {
        last.assign(text, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(last, "STOPPING=1");
    close(messages);
}

TEST_F(Watch, RefusesFoldersThatCannotBe) {
    expectRefusals({{"watch " + in_ + " -o " + in_, 2, "another folder"},
                    {"watch " + in_ + "/none -o " + out_, 2, "no such folder"},
                    {"watch " + in_ + " -o " + scan_ + "/out", 1, "scan.uf/out"}});
}

}  // namespace
