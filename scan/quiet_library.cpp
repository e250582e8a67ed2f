#include "quiet_library.h"

#include <cstdio>
#include <mutex>

namespace scan {
namespace {

struct Silence {
    std::mutex mutex;
    int wishes = 0;
    FILE* shown = nullptr;
    FILE* nowhere = nullptr; /* never closed: another thread may just be writing to it */
};

Silence& silence() {
    static Silence instance;
    return instance;
}

}  // namespace

QuietLibrary::QuietLibrary() {
    Silence& state = silence();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (state.wishes++ > 0) return;
    if (!state.nowhere) state.nowhere = std::fopen("/dev/null", "we");
    state.shown = stdout;
    if (state.nowhere) stdout = state.nowhere;
}

QuietLibrary::~QuietLibrary() {
    Silence& state = silence();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (--state.wishes == 0) stdout = state.shown;
}

}  // namespace scan
