#include "output/output_file.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace cli {
namespace {

namespace fs = std::filesystem;

/* The names an interrupted program must take away. A signal handler may only read plain memory. */
constexpr int kMostPending = 64;
char pendingNames[kMostPending][4096];

extern "C" void removePending(int signalNumber) {
    for (const char* name : pendingNames)
        if (*name) unlink(name);
    _exit(128 + signalNumber);
}

void catchInterruptions() {
    static bool done = false;
    if (done) return;
    done = true;
    for (int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        if (current.sa_handler == SIG_IGN) continue; /* nohup */
        struct sigaction action = {};
        action.sa_handler = removePending;
        sigaction(number, &action, nullptr);
    }
}

void remember(const std::string& name) {
    catchInterruptions();
    for (auto& slot : pendingNames) {
        if (*slot || name.size() >= sizeof slot) continue;
        std::memcpy(slot + 1, name.c_str() + 1, name.size());
        slot[0] = name[0]; /* last: the handler looks at it first */
        return;
    }
}

/* The file that a symbolic link leads to: it is replaced, the link stays. */
std::string behindLinks(const std::string& target) {
    std::error_code error;
    if (!fs::is_symlink(target, error)) return target;
    const fs::path file = fs::canonical(target, error);
    return error ? target : file.string();
}

std::string temporarySuffix() {
    return ".part" + std::to_string(getpid());
}

void forget(const std::string& name) {
    for (auto& slot : pendingNames)
        if (name == slot) slot[0] = '\0';
}

}  // namespace

OutputFile::OutputFile(const std::string& target)
    : target_(behindLinks(target)), temporary_(target_ + temporarySuffix()) {
    std::error_code error;
    if (fs::is_directory(target_, error)) throw std::runtime_error(target + " is a directory");
    // The rename would put a file in the place of a device or pipe.
    if (fs::exists(target_, error) && !fs::is_regular_file(target_, error))
        throw std::runtime_error(target + " is not a regular file");
    const fs::path parent = fs::path(target_).parent_path();
    if (!parent.empty() && !fs::is_directory(parent, error))
        throw std::runtime_error("there is no directory " + parent.string());
    remember(temporary_);
}

OutputFile::~OutputFile() {
    std::error_code ignored;
    fs::remove(temporary_, ignored);
    forget(temporary_);
}

void OutputFile::commit() {
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) failWriting(target_, error.value());
    forget(temporary_);
}

void failWriting(const std::string& path, int error) {
    std::string name = path;
    const std::string suffix = temporarySuffix();
    if (name.ends_with(suffix)) name.resize(name.size() - suffix.size());
    throw std::runtime_error("cannot write " + name +
                             (error != 0 ? std::string(": ") + std::strerror(error) : ""));
}

}  // namespace cli
