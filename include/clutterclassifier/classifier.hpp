/**
 * @file classifier.hpp
 * @brief Owners for the C interface of classifier.h, header-only, C++11 and later.
 */
#ifndef CLUTTERCLASSIFIER_CLASSIFIER_HPP
#define CLUTTERCLASSIFIER_CLASSIFIER_HPP

#include "clutterclassifier/classifier.h"

namespace clutter {

/**
 * @brief Sends the calling thread's messages of the library to a sink while it lives.
 *
 * Restores the sink that was there before. Owners of one thread end in the reverse order of their
 * beginning, in that thread.
 */
class MessageSink {
  public:
    /** Drops the messages. */
    MessageSink() : MessageSink(&MessageSink::drop, nullptr) {}

    /** Sends them to a function, as clutter_set_message_sink() does. */
    MessageSink(clutter_message_sink sink, void* context) : sink_(nullptr), context_(nullptr) {
        clutter_get_message_sink(&sink_, &context_);
        clutter_set_message_sink(sink, context);
    }

    ~MessageSink() { clutter_set_message_sink(sink_, context_); }
    MessageSink(const MessageSink&) = delete;
    MessageSink& operator=(const MessageSink&) = delete;

  private:
    static void drop(void*, const char*) {}

    clutter_message_sink sink_;
    void* context_;
};

}  // namespace clutter

#endif
