/* quiet_library.h - the library's operations without their messages. */
#ifndef SCAN_QUIET_LIBRARY_H
#define SCAN_QUIET_LIBRARY_H

#include "clutterclassifier/classifier.hpp"

namespace scan {

/* Drops the messages that the library prints in the calling thread while it lives. */
class QuietLibrary {
    clutter::MessageSink sink_;
};

}  // namespace scan

#endif
