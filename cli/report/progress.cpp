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

void Progress::show(int done, int total, const std::string& what) {
    if (!active_ || total < 2) {
        return;
    }
    const std::string bar(static_cast<std::size_t>(kBarWidth * done / total), '#');
    const std::string text =
        what.size() > kLongestText ? "..." + what.substr(what.size() - kLongestText + 3) : what;
    std::fprintf(stderr, "\r\033[K[%-*s] %d/%d %s", kBarWidth, bar.c_str(), done, total,
                 forTerminal(text).c_str());
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
