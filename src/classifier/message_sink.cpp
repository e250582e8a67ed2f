/*
 * The sink of the calling thread's messages, for hosts.
 */
#include "base/message.h"
#include "clutterclassifier/classifier.h"

namespace base = clutter::base;

clutter_status clutter_set_message_sink(clutter_message_sink sink, void* context) {
    base::setMessageTarget({sink, context});
    return CLUTTER_OK;
}

clutter_status clutter_get_message_sink(clutter_message_sink* sink, void** context) {
    if (sink == nullptr || context == nullptr) {
        return CLUTTER_INVALID_ARGUMENT;
    }
    const base::MessageTarget target = base::messageTarget();
    *sink = target.sink;
    *context = target.context;
    return CLUTTER_OK;
}
