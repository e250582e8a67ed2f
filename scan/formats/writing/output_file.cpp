/* output_file.cpp - temporary files: their names, their permissions, their removal. */
#include "scan/formats/writing/output_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <random>
#include <stdexcept>

namespace scan {
namespace {

namespace fs = std::filesystem;

/* The names that an interrupted program must remove. A signal handler may only read plain memory.
 */
constexpr int kMaxPending = 64;
char pendingNames[kMaxPending][4096];
std::mutex pendingMutex;

extern "C" void removePending(int signalNumber) {
    for (const char* name : pendingNames) {
        if (*name) {
            unlink(name);
        }
    }
    _exit(128 + signalNumber);
}

void remember(const std::string& name) {
    const std::lock_guard lock(pendingMutex);
    for (auto& slot : pendingNames) {
        if (*slot || name.size() >= sizeof slot) {
            continue;
        }
        std::memcpy(slot + 1, name.c_str() + 1, name.size());
        slot[0] = name[0];  // last: the handler looks at it first
        return;
    }
}

void forget(const std::string& name) {
    const std::lock_guard lock(pendingMutex);
    for (auto& slot : pendingNames) {
        if (name == slot) {
            slot[0] = '\0';
        }
    }
}

/* The file that a symbolic link leads to: it is replaced, the link stays. */
std::string pastLinks(const std::string& target) {
    std::error_code error;
    if (!fs::is_symlink(target, error)) {
        return target;
    }
    const fs::path file = fs::canonical(target, error);
    return error ? target : file.string();
}

/* Short and ASCII, so that it fits wherever the target's own name does. */
std::string randomName() {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz234567";
    constexpr int kLength = 16;
    std::random_device device;
    std::string name = ".part-";
    for (int i = 0; i < kLength; ++i) {
        name += kLetters[device() % 32];
    }
    return name;
}

void requireRegular(const std::string& target) {
    std::error_code error;
    if (fs::is_directory(target, error)) {
        throw std::runtime_error(target + " is a directory");
    }
    // The rename would put a file in the place of a device or pipe.
    if (fs::exists(target, error) && !fs::is_regular_file(target, error)) {
        throw std::runtime_error(target + " is not a regular file");
    }
}

/* Nobody else's file or link is opened. Returns errno, 0 when the file is there. */
int create(const std::string& path) {
    constexpr mode_t kLikeAnyFile = 0666;  // less what the umask takes
    const int file =
        open(path.c_str(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, kLikeAnyFile);
    if (file < 0) {
        return errno;
    }
    close(file);
    return 0;
}

std::string createBeside(const std::string& target) {
    const fs::path parent = fs::path(target).parent_path();
    std::error_code error;
    if (!parent.empty() && !fs::is_directory(parent, error)) {
        throw std::runtime_error("there is no directory " + parent.string());
    }
    for (;;) {
        const std::string path = (parent / randomName()).string();
        const int reason = create(path);
        if (reason == 0) {
            return path;
        }
        if (reason != EEXIST) {
            failWriting(target, reason);
        }
    }
}

void keepPermissions(const std::string& target, const std::string& temporary) {
    struct stat status = {};
    if (stat(target.c_str(), &status) == 0) {
        chmod(temporary.c_str(), status.st_mode & 0777);
    }
}

}  // namespace

OutputFile::OutputFile(const std::string& target) : target_(pastLinks(target)) {
    requireRegular(target_);
    temporary_ = createBeside(target_);
    remember(temporary_);
    keepPermissions(target_, temporary_);
}

OutputFile::~OutputFile() {
    std::error_code ignored;
    fs::remove(temporary_, ignored);
    forget(temporary_);
}

void OutputFile::commit() {
    std::error_code error;
    fs::rename(temporary_, target_, error);
    if (error) {
        failWriting(target_, error.value());
    }
    forget(temporary_);
}

void removeTemporariesWhenInterrupted() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        if (current.sa_handler == SIG_IGN) {
            continue;  // nohup
        }
        struct sigaction action = {};
        action.sa_handler = removePending;
        sigaction(number, &action, nullptr);
    }
}

void failWriting(const std::string& path, int error) {
    throw std::runtime_error("cannot write " + path +
                             (error != 0 ? std::string(": ") + std::strerror(error) : ""));
}

}  // namespace scan
