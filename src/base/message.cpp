/*
 * The message target is a variable of each thread: a thread that redirects its messages changes
 * nothing for the others, nor for what the host prints itself.
 */
#include "base/message.h"

#include <cstdarg>
#include <cstdio>

namespace clutter::base {
namespace {

thread_local MessageTarget threadTarget;

}  // namespace

MessageTarget messageTarget() {
    return threadTarget;
}

void setMessageTarget(MessageTarget target) {
    threadTarget = target;
}

void report(const char* format, ...) {
    const MessageTarget target = threadTarget;
    std::va_list arguments;
    va_start(arguments, format);
    if (target.sink == nullptr) {
        std::vprintf(format, arguments);
    } else {
        char text[kMaxSinkMessage];
        std::vsnprintf(text, sizeof text, format, arguments);
        target.sink(target.context, text);
    }
    va_end(arguments);
}

}  // namespace clutter::base
