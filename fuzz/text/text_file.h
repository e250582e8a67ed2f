/* text_file.h - text files that the fuzzers of text formats write and compare. */
#ifndef CLUTTER_FUZZ_TEXT_TEXT_FILE_H
#define CLUTTER_FUZZ_TEXT_TEXT_FILE_H

#include <cmath>
#include <cstddef>
#include <string>

#include "fuzz/support/require.h"
#include "support/temp_dir.h"

namespace clutter::fuzz {

/* Larger tables take longer to write than there is to learn from them. */
constexpr long long kMaxCells = 4096;

inline bool isSmall(int rows, int columns) {
    const long long cells = static_cast<long long>(rows) * columns;
    return rows > 0 && columns > 0 && cells <= kMaxCells;
}

inline bool allFinite(const float* values, int rows, int columns) {
    for (int i = 0; i < rows * columns; ++i) {
        if (!std::isfinite(values[i])) {
            return false;
        }
    }
    return true;
}

/* What was read and written once, read and written again is the same text: no digit is lost. */
inline void requireSameText(const std::string& first, const std::string& second) {
    require(test::readFile(first) == test::readFile(second), "a text comes back as it was written");
}

}  // namespace clutter::fuzz

#endif
