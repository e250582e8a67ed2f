/* history.h - what programs did to a file: one line each, the last one at the end. */
#ifndef SCAN_FORMATS_HISTORY_H
#define SCAN_FORMATS_HISTORY_H

#include <string>

#include "scan/scan.h"

namespace scan {

inline std::string extendedHistory(const std::string& history, const std::string& line) {
    return history + (history.empty() || history.back() == '\n' ? "" : "\n") + line;
}

/* Of a file that is made from a scan. */
inline std::string historyOf(const Scan& scan) {
    return extendedHistory(scan.history, "clutterclassifier: written from " + scan.format);
}

}  // namespace scan

#endif
