/* run.cpp - waits, works, records. Each file is worked on in a process of its own. */
#include "commands/watch/run.h"

#include <signal.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "commands/classify/run.h"
#include "commands/watch/service.h"
#include "report/failure.h"
#include "report/in_order.h"
#include "report/json.h"
#include "report/terminal.h"
#include "scan/formats/write_classes.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr double kStatusPeriodS = 60;
constexpr double kLongestWaitS = 30;  // for room on the disk
constexpr unsigned long long kMinFreeBytes = 1 << 20;

volatile sig_atomic_t stopped = 0;

extern "C" void stop(int) {
    stopped = 1;
}

void stopOnSignals() {
    for (const int number : {SIGTERM, SIGINT}) {
        struct sigaction action = {};
        action.sa_handler = stop;
        sigaction(number, &action, nullptr);
    }
}

/* Half of the time in which the service manager wants to hear something. */
double heartbeatS() {
    const char* text = std::getenv("WATCHDOG_USEC");
    const double wanted = text == nullptr ? 0 : std::atof(text) / 2e6;
    return wanted > 0 ? std::min(wanted, kStatusPeriodS) : kStatusPeriodS;
}

void pauseS(double seconds) {
    for (const double end = nowS() + seconds; stopped == 0 && nowS() < end;) {
        usleep(50'000);
    }
}

std::string withoutLineEnd(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

/* The reason in a line of the program's own: "clutterclassifier: FILE: REASON". */
std::string reasonIn(const std::string& errors, const std::string& file) {
    const std::string before = "clutterclassifier: " + forTerminal(file) + ": ";
    const std::string line = withoutLineEnd(errors);
    return line.rfind(before, 0) == 0 ? line.substr(before.size()) : line;
}

}  // namespace

WatchRun::WatchRun(const WatchCall& call) : call_(call), record_(call.classify.output) {}

void WatchRun::perform() {
    stopOnSignals();
    Arrivals arrivals(call_.folder);
    record_.writeStatus();
    notifyService("READY=1");
    double written = nowS();
    const double period = heartbeatS();
    while (stopped == 0) {
        Arrival next;
        if (arrivals.wait(period, next)) {
            handle(next);
        }
        notifyService("WATCHDOG=1\nSTATUS=" + std::to_string(record_.figures().files) + " files, " +
                      std::to_string(record_.figures().failures) + " failures");
        if (nowS() - written >= kStatusPeriodS) {
            record_.writeStatus();
            written = nowS();
        }
    }
    notifyService("STOPPING=1");
    record_.writeStatus();
}

/* One file for the whole scan, named after the input. */
std::string WatchRun::outputFor(const std::string& name) const {
    std::string ending = "." + call_.classify.format;
    if (call_.classify.format.empty()) {
        try {
            ending = scan::usualEnding(call_.folder + '/' + name);
        } catch (const std::exception&) {
            ending = ".uf";  // reading the file will report the reason
        }
        static const std::set<std::string> kWhole = {".uf", ".h5", ".nc", ".nc4"};
        ending = kWhole.count(ending) > 0 ? ending : ".uf";
    }
    const bool same = fs::path(name).extension() == ending;
    return (fs::path(call_.classify.output) / (same ? name : name + ending)).string();
}

/* The reason why there is no output; empty when it is written. */
std::string WatchRun::tryFile(const std::string& input, const std::string& output) const {
    std::string reason;
    const auto work = [&](std::size_t) -> std::string {
        signal(SIGTERM, SIG_IGN);  // the current file comes to its end
        signal(SIGINT, SIG_IGN);
        ClassifyCall call = call_.classify;
        call.inputs = {input};
        call.output = output;
        call.format.clear();
        call.quiet = true;
        try {
            return ClassifyRun(call).perform() ? "done" : "";
        } catch (const CLI::Error& error) {
            throw std::runtime_error(error.what());
        }
    };
    runInOrder(1, 1, work, [&](std::size_t, const Finished& finished) {
        if (finished.result == "done") {
            return;
        }
        reason = finished.failure.empty() ? reasonIn(finished.errors, input) : finished.failure;
        reason = reason.empty() ? "failed" : reason;
    });
    return reason;
}

bool WatchRun::isDiskFull(const Version& input) const {
    struct statvfs state = {};
    if (statvfs(call_.classify.output.c_str(), &state) != 0) {
        return false;
    }
    const unsigned long long free =
        static_cast<unsigned long long>(state.f_bavail) * state.f_frsize;
    return state.f_favail == 0 ||
           free < std::max(kMinFreeBytes, 2ULL * static_cast<unsigned long long>(input.bytes));
}

void WatchRun::handle(const Arrival& arrival) {
    const std::string input = call_.folder + '/' + arrival.name;
    const Version version = versionOf(input);
    const std::string output = outputFor(arrival.name);
    if (version.bytes < 0 || record_.isDone(arrival.name, version, output)) {
        return;
    }
    std::string reason = tryFile(input, output);
    for (double waitS = 0.5; !reason.empty() && stopped == 0 && isDiskFull(version);
         waitS = std::min(2 * waitS, kLongestWaitS)) {
        if (waitS == 0.5) {
            reportError(call_.classify.output, "the disk is full: waiting for room");
        }
        notifyService("WATCHDOG=1\nSTATUS=the disk is full");
        pauseS(waitS);
        reason = tryFile(input, output);
    }
    if (reason.empty()) {
        const double latencyS = nowS() - arrival.timeS;
        record_.addDone(arrival.name, version, latencyS);
        reportDone(arrival.name, output, latencyS);
    } else if (!isDiskFull(version)) {
        record_.addFailure(arrival.name, version, reason);
        reportFailure(arrival.name, reason);
    }
    record_.writeStatus();
}

void WatchRun::reportDone(const std::string& name, const std::string& output,
                          double latencyS) const {
    if (call_.json) {
        std::printf("{\"input\": %s, \"output\": %s, \"latency_s\": %s}\n", jsonText(name).c_str(),
                    jsonText(output).c_str(), jsonNumber(latencyS).c_str());
    } else if (!call_.classify.quiet) {
        std::printf("%s -> %s  %.2f s after its arrival\n", forTerminal(name).c_str(),
                    forTerminal(output).c_str(), latencyS);
    }
    std::fflush(stdout);
}

void WatchRun::reportFailure(const std::string& name, const std::string& reason) const {
    if (call_.json) {
        std::printf("{\"input\": %s, \"failure\": %s}\n", jsonText(name).c_str(),
                    jsonText(reason).c_str());
        std::fflush(stdout);
    } else {
        reportError(name, reason);
    }
}

}  // namespace cli
