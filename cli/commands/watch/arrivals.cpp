/* arrivals.cpp - events of a folder. */
#include "commands/watch/arrivals.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace cli {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& folder) {
    throw std::system_error(errno, std::generic_category(), folder);
}

}  // namespace

double nowS() {
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/* The events begin before the list, so that no file is missed. */
Arrivals::Arrivals(std::string folder)
    : folder_(std::move(folder)), events_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    if (events_ < 0) {
        fail(folder_);
    }
    if (inotify_add_watch(events_, folder_.c_str(), IN_CLOSE_WRITE | IN_MOVED_TO | IN_ONLYDIR) <
        0) {
        const int reason = errno;
        close(events_);
        errno = reason;
        fail(folder_);
    }
    listAll();
}

Arrivals::~Arrivals() {
    close(events_);
}

void Arrivals::add(const std::string& name, double timeS, bool fresh) {
    const bool known = std::any_of(waiting_.begin(), waiting_.end(),
                                   [&](const Arrival& other) { return other.name == name; });
    if (!name.empty() && name.front() != '.' && !known) {
        waiting_.push_back({name, timeS, fresh});
    }
}

void Arrivals::listAll() {
    std::vector<Arrival> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        struct stat state = {};
        if (stat(entry->path().c_str(), &state) == 0 && S_ISREG(state.st_mode)) {
            found.push_back({entry->path().filename().string(),
                             static_cast<double>(state.st_mtim.tv_sec) +
                                 1e-9 * static_cast<double>(state.st_mtim.tv_nsec)});
        }
    }
    if (error) {
        throw std::system_error(error, folder_);
    }
    std::sort(found.begin(), found.end(), [](const Arrival& a, const Arrival& b) {
        return std::pair(a.timeS, a.name) < std::pair(b.timeS, b.name);
    });
    for (const Arrival& file : found) {
        add(file.name, file.timeS, false);
    }
}

void Arrivals::readEvents() {
    alignas(inotify_event) char bytes[16384];
    for (ssize_t count = 0; (count = read(events_, bytes, sizeof bytes)) > 0;) {
        for (ssize_t at = 0; at < count;) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
            at += static_cast<ssize_t>(sizeof *event + event->len);
            if ((event->mask & IN_Q_OVERFLOW) != 0) {
                listAll();
            } else if ((event->mask & IN_ISDIR) == 0 && event->len > 0) {
                add(event->name, nowS(), true);
            }
        }
    }
}

bool Arrivals::wait(double seconds, Arrival& next) {
    readEvents();
    if (waiting_.empty()) {
        pollfd end = {events_, POLLIN, 0};
        (void)poll(&end, 1, static_cast<int>(1000 * seconds));
        readEvents();
    }
    if (waiting_.empty()) {
        return false;
    }
    next = std::move(waiting_.front());
    waiting_.pop_front();
    return true;
}

}  // namespace cli
