/* input_file.cpp - pipes and standard input as files in memory. */
#include "options/input_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <utility>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"

namespace cli {

namespace {

constexpr char kStandardInput[] = "-";
constexpr std::size_t kMaxPipeBytes = std::size_t{1} << 30;
constexpr std::size_t kPieceBytes = std::size_t{1} << 16;

/* A descriptor that is closed at the end of its scope, except for standard input's. */
class Source {
  public:
    explicit Source(const std::string& given)
        : descriptor_(given == kStandardInput ? STDIN_FILENO : open(given.c_str(), O_RDONLY)) {
        if (descriptor_ < 0) {
            throw std::runtime_error(std::strerror(errno));
        }
    }
    ~Source() {
        if (descriptor_ != STDIN_FILENO) {
            close(descriptor_);
        }
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    /* Bytes read into piece; 0 at the end. */
    [[nodiscard]] std::size_t read(std::vector<char>& piece) const {
        ssize_t count = 0;
        do {
            count = ::read(descriptor_, piece.data(), piece.size());
        } while (count < 0 && errno == EINTR);
        if (count < 0) {
            throw std::runtime_error(std::strerror(errno));
        }
        return static_cast<std::size_t>(count);
    }

  private:
    int descriptor_;
};

void append(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno != EINTR) {
            throw std::runtime_error(std::strerror(errno));
        }
        if (written > 0) {
            bytes += written;
            count -= static_cast<std::size_t>(written);
        }
    }
}

void copyAll(const Source& source, int descriptor) {
    std::vector<char> piece(kPieceBytes);
    std::size_t total = 0;
    for (std::size_t count = source.read(piece); count > 0; count = source.read(piece)) {
        total += count;
        if (total > kMaxPipeBytes) {
            throw std::runtime_error("holds more than " + std::to_string(kMaxPipeBytes >> 20) +
                                     " MB, too much for a pipe: save it as a file");
        }
        append(descriptor, piece.data(), count);
    }
}

/* Whether the input has to be copied. What cannot be looked at is left to the reader. */
bool isStream(const std::string& given) {
    struct stat status {};
    const bool standard = given == kStandardInput;
    if ((standard ? fstat(STDIN_FILENO, &status) : stat(given.c_str(), &status)) != 0) {
        return standard;
    }
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
        throw std::runtime_error("is a device, not a file or a pipe");
    }
    return standard || S_ISFIFO(status.st_mode);
}

}  // namespace

InputFile::InputFile(std::string given)
    : given_(std::move(given)), name_(given_ == kStandardInput ? "<standard input>" : given_) {}

InputFile::InputFile(InputFile&& other) noexcept
    : given_(std::move(other.given_)),
      name_(std::move(other.name_)),
      path_(std::move(other.path_)),
      failure_(std::move(other.failure_)),
      descriptor_(std::exchange(other.descriptor_, -1)) {}

InputFile::~InputFile() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::string InputFile::stem() const {
    return given_ == kStandardInput ? "stdin" : std::filesystem::path(given_).stem().string();
}

/* A pipe gives its bytes once: a failure is kept, and the next call does not read what is left. */
const std::string& InputFile::path() const {
    if (!failure_.empty()) {
        throw std::runtime_error(failure_);
    }
    if (!path_.empty()) {
        return path_;
    }
    try {
        path_ = isStream(given_) ? copy() : given_;
    } catch (const std::runtime_error& error) {
        failure_ = error.what();
        throw;
    }
    return path_;
}

std::string InputFile::copy() const {
    const Source source(given_);
    descriptor_ = memfd_create("clutterclassifier", MFD_CLOEXEC);
    if (descriptor_ < 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    copyAll(source, descriptor_);
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

scan::Scan readInput(const InputFile& input, const scan::ReadOptions& options) {
    scan::Scan scan = scan::readScan(input.path(), options);
    scan.path = input.name();
    return scan;
}

scan::Scan readInput(const InputFile& input, std::unique_ptr<Cufrw>& words,
                     const scan::ReadOptions& options) {
    scan::Scan scan = scan::readScan(input.path(), words, options);
    scan.path = input.name();
    return scan;
}

}  // namespace cli
