/**
 * @file classifier.h
 * @brief The library's C interface beside the entry point: functions with the prefix `clutter_`.
 *
 * Plain C (C99 and later) and C++ (C++11 and later); classifier.hpp has owners for C++. Every
 * function returns a status code, results go through pointers, no exception leaves, and nothing is
 * printed.
 */
#ifndef CLUTTERCLASSIFIER_CLASSIFIER_H
#define CLUTTERCLASSIFIER_CLASSIFIER_H

#include "clutterclassifier/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What a function returns. */
typedef enum clutter_status {
    CLUTTER_OK = 0,              /**< done */
    CLUTTER_INVALID_ARGUMENT = 1 /**< a null pointer, or a value that makes no sense */
} clutter_status;

/**
 * @brief Receives one message of the library, with its line break.
 *
 * @param context what was given with the sink
 * @param text    the message, cut after 8,191 characters; valid during the call only
 *
 * Called in the thread that runs the operation. It must return normally (no exception, no longjmp).
 */
typedef void (*clutter_message_sink)(void* context, const char* text);

/**
 * @brief Sends the messages that operations print in the calling thread to a sink.
 *
 * The entry point and some operations of the classes print a line on standard output. With a sink,
 * the calling thread's lines go there instead; other threads, and what the host prints itself, are
 * not affected. A new thread starts without a sink.
 *
 * @param sink    null: standard output again
 * @param context passed on to the sink; may be null
 * @return CLUTTER_OK
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_set_message_sink(clutter_message_sink sink,
                                                                 void* context);

/**
 * @brief The calling thread's sink and its context, to be restored later.
 *
 * @param sink    receives the sink, null where the thread has none
 * @param context receives its context
 * @return CLUTTER_OK, or CLUTTER_INVALID_ARGUMENT when a pointer is null
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_get_message_sink(clutter_message_sink* sink,
                                                                 void** context);

#ifdef __cplusplus
}
#endif

#endif
