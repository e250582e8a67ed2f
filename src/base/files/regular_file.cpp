/*
 * Regular files by descriptor: the checks apply to the file that was opened, even if its name means
 * another file by then.
 */
#include "base/files/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace clutter::base {
namespace {

class Descriptor {
  public:
    // Without waiting: opening a pipe for reading would otherwise wait for its writer.
    explicit Descriptor(const char* path)
        : number_(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

  private:
    int number_;
};

std::string lastError() {
    return std::generic_category().message(errno);
}

/* Why a descriptor is not read; empty when it is a regular file within the bound. */
std::string objection(int descriptor, std::size_t& bytes) {
    struct stat state = {};
    if (descriptor < 0 || fstat(descriptor, &state) != 0) {
        return lastError();
    }
    if (S_ISDIR(state.st_mode)) {
        return "is a directory";
    }
    if (!S_ISREG(state.st_mode)) {
        return "is not a regular file";
    }
    bytes = static_cast<std::size_t>(state.st_size);
    return bytes > kMaxRegularFileBytes ? "is too large" : "";
}

/* Fills bytes until the end of the file. False after an error. */
bool fill(int descriptor, std::vector<unsigned char>& bytes) {
    std::size_t used = 0;
    while (used < bytes.size()) {
        const ssize_t got = read(descriptor, bytes.data() + used, bytes.size() - used);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return false;
        }
        if (got == 0) {
            break;
        }
        used += static_cast<std::size_t>(got);
    }
    bytes.resize(used);
    return true;
}

}  // namespace

std::optional<std::vector<unsigned char>> readRegularFile(const char* path, std::string* problem) {
    std::string reason = "has no name";
    if (path != nullptr) {
        const Descriptor file(path);
        std::size_t size = 0;
        reason = objection(file.number(), size);
        if (reason.empty()) {
            std::vector<unsigned char> bytes(size);
            if (fill(file.number(), bytes)) {
                return bytes;
            }
            reason = lastError();
        }
    }
    if (problem != nullptr) {
        *problem = reason;
    }
    return std::nullopt;
}

}  // namespace clutter::base
