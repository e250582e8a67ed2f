/*
 * message.h - the library's own messages: to the calling thread's sink, else to standard output.
 */
#ifndef CLUTTER_BASE_MESSAGE_H
#define CLUTTER_BASE_MESSAGE_H

#include <cstddef>

namespace clutter::base {

/* Receives one message with its line break; text is valid during the call only. Must not throw. */
using MessageSink = void (*)(void* context, const char* text);

/* Where the messages of a thread go; a null sink is standard output. */
struct MessageTarget {
    MessageSink sink = nullptr;
    void* context = nullptr;
};

/* A message to a sink is cut to fewer characters than this; standard output gets it whole. */
constexpr std::size_t kMaxSinkMessage = 8192;

/* The calling thread's target. */
MessageTarget messageTarget();
void setMessageTarget(MessageTarget target);

/* Sends one message, formatted as std::printf does it. */
[[gnu::format(printf, 1, 2)]] void report(const char* format, ...);

}  // namespace clutter::base

#endif
