/* record.cpp - the files that hold the record. */
#include "commands/watch/record.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include "commands/watch/arrivals.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char kFailures[] = "/failures.csv";
constexpr char kStatus[] = "/status.prom";
constexpr char kUnfinished[] = ".part-";  // the names of output files before they are complete

/* A field of a table in quotes, on one line. */
std::string quoted(const std::string& text) {
    std::string field = "\"";
    for (const char c : text) {
        field += c == '\n' || c == '\r' ? ' ' : c;
        field += c == '"' ? "\"" : "";
    }
    return field + "\"";
}

/* Takes a quoted field off the beginning of a line. */
std::string takeQuoted(std::string& line) {
    std::string field;
    std::size_t at = 1;
    for (; at < line.size(); ++at) {
        if (line[at] == '"' && (at + 1 == line.size() || line[at + 1] != '"')) {
            break;
        }
        at += line[at] == '"' ? 1 : 0;
        field += line[at];
    }
    line.erase(0, at + 2);  // and the comma
    return field;
}

}  // namespace

Version versionOf(const std::string& path) {
    struct stat state = {};
    if (stat(path.c_str(), &state) != 0 || !S_ISREG(state.st_mode)) {
        return {};
    }
    return {state.st_size,
            std::int64_t{state.st_mtim.tv_sec} * 1'000'000'000 + state.st_mtim.tv_nsec};
}

Record::Record(std::string folder)
    : folder_(std::move(folder)),
      lock_(open((folder_ + "/.watch-lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0666)) {
    if (lock_ < 0 || flock(lock_, LOCK_EX) != 0) {
        throw std::system_error(errno, std::generic_category(), folder_);
    }
    removeUnfinished();
    readFailures();
}

Record::~Record() {
    close(lock_);
}

void Record::removeUnfinished() const {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder_, error)) {
        if (entry.path().filename().string().rfind(kUnfinished, 0) == 0) {
            fs::remove(entry.path(), error);
        }
    }
}

void Record::readFailures() {
    std::ifstream file(folder_ + kFailures);
    std::string line;
    std::getline(file, line);  // the heading
    while (std::getline(file, line)) {
        if (line.empty() || line.front() != '"') {
            continue;  // cut off by a kill
        }
        const std::string name = takeQuoted(line);
        Version version;
        char comma = 0;
        if (std::istringstream(line) >> version.bytes >> comma >> version.timeNs) {
            failed_[name] = version;
        }
    }
}

bool Record::isDone(const std::string& name, const Version& input,
                    const std::string& output) const {
    const auto failed = failed_.find(name);
    if (failed != failed_.end() && failed->second == input) {
        return true;
    }
    const Version written = versionOf(output);
    if (written.bytes < 0) {
        return false;
    }
    const auto done = done_.find(name);
    return done != done_.end() ? done->second == input : written.timeNs >= input.timeNs;
}

void Record::addDone(const std::string& name, const Version& input, double latencyS) {
    done_[name] = input;
    failed_.erase(name);
    ++figures_.files;
    figures_.bytes += input.bytes;
    figures_.lastDataS = static_cast<double>(input.timeNs) * 1e-9;
    figures_.latencyS = latencyS;
}

void Record::addFailure(const std::string& name, const Version& input, const std::string& reason) {
    failed_[name] = input;
    ++figures_.failures;
    const bool isNew = versionOf(folder_ + kFailures).bytes < 0;
    std::ofstream file(folder_ + kFailures, std::ios::app);
    if (isNew) {
        file << "input,bytes,modified_ns,reason\n";
    }
    file << quoted(name) << ',' << input.bytes << ',' << input.timeNs << ',' << quoted(reason)
         << std::endl;
}

void Record::writeStatus() const {
    const struct {
        const char* name;
        const char* type;
        const char* help;
        double value;
    } rows[] = {
        {"files_total", "counter", "Files written since the start", double(figures_.files)},
        {"failures_total", "counter", "Files that failed since the start",
         double(figures_.failures)},
        {"bytes_total", "counter", "Bytes of the inputs of these files", double(figures_.bytes)},
        {"last_data_seconds", "gauge", "Time of the last input, seconds since 1970",
         figures_.lastDataS},
        {"latency_seconds", "gauge", "From the arrival of the last input to its output",
         figures_.latencyS},
        {"heartbeat_seconds", "gauge", "When this file was written, seconds since 1970", nowS()},
    };
    const std::string unfinished = folder_ + '/' + kUnfinished + "status";
    {
        std::ofstream file(unfinished);
        file.precision(15);
        for (const auto& row : rows) {
            const std::string name = std::string("clutterclassifier_watch_") + row.name;
            file << "# HELP " << name << ' ' << row.help << "\n# TYPE " << name << ' ' << row.type
                 << '\n'
                 << name << ' ' << row.value << '\n';
        }
        if (!file.flush()) {
            std::remove(unfinished.c_str());
            return;
        }
    }
    std::rename(unfinished.c_str(), (folder_ + kStatus).c_str());
}

}  // namespace cli
