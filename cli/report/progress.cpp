/* progress.cpp - a bar that is drawn over and over on one line. */
#include "report/progress.h"

#include <unistd.h>

#include <cstdio>

#include "report/terminal.h"

namespace cli {
namespace {

constexpr int kBarWidth = 20;
constexpr std::size_t kLongestText = 48;

}  // namespace

Progress::Progress(bool wanted) : active_(wanted && isatty(STDERR_FILENO)) {}

Progress::~Progress() {
    clear();
}

/* How many in a second or a minute, and the time left. */
std::string Progress::pace(int done, int total) const {
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
    if (done == 0 || seconds <= 0) {
        return "";
    }
    const double rate = done / seconds;
    const double left = (total - done) / rate;
    char text[80];
    std::snprintf(text, sizeof text, "%.3g/%s, %d:%02d left, ", rate >= 1 ? rate : 60 * rate,
                  rate >= 1 ? "s" : "min", static_cast<int>(left) / 60,
                  static_cast<int>(left) % 60);
    return text;
}

void Progress::show(int done, int total, const std::string& what) {
    if (!active_ || total < 2 || isatty(STDERR_FILENO) == 0) {  // a worker has another stderr
        return;
    }
    const std::string bar(static_cast<std::size_t>(kBarWidth * done / total), '#');
    const std::string text =
        what.size() > kLongestText ? "..." + what.substr(what.size() - kLongestText + 3) : what;
    std::fprintf(stderr, "\r\033[K[%-*s] %d/%d %s%s", kBarWidth, bar.c_str(), done, total,
                 pace(done, total).c_str(), forTerminal(text).c_str());
    std::fflush(stderr);
    shown_ = true;
}

void Progress::clear() {
    if (!shown_) {
        return;
    }
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    shown_ = false;
}

}  // namespace cli
