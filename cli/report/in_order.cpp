/* in_order.cpp - workers, their messages, and the order of these. */
#include "report/in_order.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <new>
#include <system_error>
#include <vector>

#include "report/failure.h"

namespace cli {

namespace {

constexpr int kMaxWorkers = 256;
constexpr std::size_t kLead = 4;  // files of each worker that may wait for an earlier one
constexpr useconds_t kPauseUs = 2000;

[[noreturn]] void failSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

enum Kind : std::uint64_t { kDone, kFailed, kWrongCall };

/* Before the texts of a message. */
struct Head {
    std::uint64_t index, kind, result, output, errors;
};

/* What the workers and this process see of each other. */
struct Shared {
    std::atomic<std::size_t> next{0};      // file to begin with
    std::atomic<std::size_t> finished{0};  // files whose output is out
    std::atomic<std::size_t> current[kMaxWorkers];

    static constexpr std::size_t kIdle = SIZE_MAX;
};

class SharedMemory {
  public:
    SharedMemory()
        : bytes_(mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                      -1, 0)) {
        if (bytes_ == MAP_FAILED) {
            failSystem("no shared memory");
        }
        shared_ = new (bytes_) Shared;
        std::fill(std::begin(shared_->current), std::end(shared_->current), Shared::kIdle);
    }
    ~SharedMemory() { munmap(bytes_, sizeof(Shared)); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    Shared& operator*() const { return *shared_; }

  private:
    void* bytes_;
    Shared* shared_;
};

bool writeAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes += std::max<ssize_t>(written, 0);
        count -= static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
    return true;
}

/* A stream of this process that goes to memory from now on. */
class Captured {
  public:
    explicit Captured(int stream) : memory_(memfd_create("output", MFD_CLOEXEC)) {
        if (memory_ < 0 || dup2(memory_, stream) < 0) {
            failSystem("no memory for output");
        }
    }

    /* What came since the last call. */
    std::string take() const {
        std::string text(static_cast<std::size_t>(std::max<off_t>(lseek(memory_, 0, SEEK_END), 0)),
                         '\0');
        const ssize_t count = pread(memory_, text.data(), text.size(), 0);
        text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (ftruncate(memory_, 0) != 0 || lseek(memory_, 0, SEEK_SET) != 0) {
            failSystem("no memory for output");
        }
        return text;
    }

  private:
    int memory_;
};

/* One worker's life. */
void workOn(std::size_t count, std::size_t lead, const Work& work, Shared& shared, int self,
            int pipe) {
    const Captured output(STDOUT_FILENO);
    const Captured errors(STDERR_FILENO);
    for (;;) {
        const std::size_t index = shared.next++;
        if (index >= count) {
            return;
        }
        shared.current[self] = index;
        while (index >= shared.finished + lead) {
            usleep(kPauseUs);
        }
        Head head = {index, kDone, 0, 0, 0};
        std::string result;
        try {
            result = work(index);
        } catch (const CLI::Error& error) {
            head.kind = kWrongCall;
            result = error.what();
        } catch (const std::exception& error) {
            head.kind = kFailed;
            result = reasonOf(error);
        }
        std::cout.flush();
        std::fflush(stdout);
        const std::string texts[] = {output.take(), errors.take()};
        head.result = result.size();
        head.output = texts[0].size();
        head.errors = texts[1].size();
        const std::string message = result + texts[0] + texts[1];
        if (!writeAll(pipe, reinterpret_cast<const char*>(&head), sizeof head) ||
            !writeAll(pipe, message.data(), message.size())) {
            return;
        }
        shared.current[self] = Shared::kIdle;
    }
}

struct Worker {
    pid_t process = -1;
    int pipe = -1;
    std::string received;  // of messages that are not complete
};

/* The workers, and what they have sent. Those that are left at the end are stopped. */
class Team {
  public:
    Team(std::size_t count, int workers, const Work& work)
        : count_(count),
          lead_(kLead * static_cast<std::size_t>(workers)),
          work_(work),
          workers_(static_cast<std::size_t>(workers)) {
        for (Worker& worker : workers_) {
            start(worker);
        }
    }

    ~Team() {
        for (Worker& worker : workers_) {
            if (worker.process > 0) {
                kill(worker.process, SIGTERM);
                end(worker);
            }
        }
    }
    Team(const Team&) = delete;
    Team& operator=(const Team&) = delete;

    /* Waits for the result of a file. */
    Finished take(std::size_t index) {
        while (finished_.count(index) == 0) {
            if (std::all_of(workers_.begin(), workers_.end(),
                            [](const Worker& worker) { return worker.pipe < 0; })) {
                finished_[index].failure = "its process ended";
                break;
            }
            listen();
        }
        Finished finished = std::move(finished_[index]);
        finished_.erase(index);
        (*memory_).finished = index + 1;
        return finished;
    }

  private:
    void start(Worker& worker) {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            failSystem("no pipe");
        }
        std::cout.flush();
        std::fflush(stdout);
        const auto self = static_cast<int>(&worker - workers_.data());
        const pid_t parent = getpid();
        worker.process = fork();
        if (worker.process < 0) {
            failSystem("no process");
        }
        if (worker.process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            if (getppid() == parent) {
                close(ends[0]);
                workOn(count_, lead_, work_, *memory_, self, ends[1]);
            }
            _exit(0);
        }
        close(ends[1]);
        worker.pipe = ends[0];
    }

    /* Returns how the worker ended, for a user. */
    static std::string end(Worker& worker) {
        close(worker.pipe);
        int status = 0;
        while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) {
        }
        worker.process = worker.pipe = -1;
        worker.received.clear();
        return WIFSIGNALED(status)
                   ? std::string("its process was ended: ") + strsignal(WTERMSIG(status))
                   : "its process ended";
    }

    void listen() {
        std::vector<pollfd> ends;
        for (const Worker& worker : workers_) {
            ends.push_back({worker.pipe, POLLIN, 0});
        }
        if (poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR) {
            failSystem("no worker to wait for");
        }
        for (std::size_t i = 0; i < ends.size(); ++i) {
            if (workers_[i].pipe >= 0 && ends[i].revents != 0) {
                receive(workers_[i]);
            }
        }
    }

    void receive(Worker& worker) {
        char piece[65536];
        const ssize_t count = read(worker.pipe, piece, sizeof piece);
        if (count > 0) {
            worker.received.append(piece, static_cast<std::size_t>(count));
            while (takeMessage(worker)) {
            }
        } else if (count == 0 || errno != EINTR) {
            replace(worker);
        }
    }

    bool takeMessage(Worker& worker) {
        Head head;
        std::string& bytes = worker.received;
        if (bytes.size() < sizeof head) {
            return false;
        }
        std::memcpy(&head, bytes.data(), sizeof head);
        const std::size_t length = sizeof head + head.result + head.output + head.errors;
        if (bytes.size() < length) {
            return false;
        }
        Finished& finished = finished_[head.index];
        const std::string result = bytes.substr(sizeof head, head.result);
        finished.output = bytes.substr(sizeof head + head.result, head.output);
        finished.errors = bytes.substr(sizeof head + head.result + head.output, head.errors);
        (head.kind == kDone ? finished.result : finished.failure) = result;
        bytes.erase(0, length);
        if (head.kind == kWrongCall) {
            throw CLI::ValidationError(result);
        }
        return true;
    }

    /* After a worker's end: its file has failed, another worker goes on with the rest. */
    void replace(Worker& worker) {
        auto& current = (*memory_).current[&worker - workers_.data()];
        const std::string reason = end(worker);
        const std::size_t lost = current.exchange(Shared::kIdle);
        if (lost == Shared::kIdle) {
            return;
        }
        finished_[lost].failure = reason;
        start(worker);
    }

    std::size_t count_, lead_;
    const Work& work_;
    SharedMemory memory_;
    std::vector<Worker> workers_;
    std::map<std::size_t, Finished> finished_;
};

}  // namespace

int processorCount() {
    cpu_set_t set;
    const int count = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
    return std::clamp(count, 1, kMaxWorkers);
}

void runInOrder(std::size_t count, int workers, const Work& work, const Finish& finish) {
    const auto most = static_cast<int>(std::min<std::size_t>(count, kMaxWorkers));
    Team team(count, std::clamp(workers, 1, std::max(most, 1)), work);
    for (std::size_t index = 0; index < count; ++index) {
        finish(index, team.take(index));
    }
}

void printAll(const Finished& finished) {
    std::fwrite(finished.output.data(), 1, finished.output.size(), stdout);
    std::fflush(stdout);
    std::fwrite(finished.errors.data(), 1, finished.errors.size(), stderr);
}

}  // namespace cli
