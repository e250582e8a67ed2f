/*
 * Lists of file names, and the name at the end of a path.
 */
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "base/array.h"
#include "base/files/file.h"
#include "base/text.h"
#include "clutterclassifier/CDSP.h"
#include "dsp/files/text_matrix.h"

using clutter::base::TokenReader;

namespace {

constexpr std::size_t kNameBytes = 1024;
/* Every name takes a whole slot, so that a list of single letters costs 512 times its size. */
constexpr std::size_t kMaxNames = std::size_t{1} << 20;

std::size_t countUpTo(std::size_t limit, std::string_view text) {
    std::size_t count = 0;
    for (TokenReader tokens(text); count < limit && tokens.next();) {
        ++count;
    }
    return count;
}

std::unique_ptr<char[]> slotsOf(std::string_view text, std::size_t count) {
    std::unique_ptr<char[]> slots(new char[count * kNameBytes]);
    TokenReader tokens(text);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string_view name = tokens.next().value_or("").substr(0, kNameBytes - 1);
        char* slot = slots.get() + i * kNameBytes;
        *std::copy(name.begin(), name.end(), slot) = '\0';
    }
    return slots;
}

}  // namespace

int CDSP::OnReadFNames(char* path, char** names, int& count) {
    if (names == nullptr) {
        return 0;
    }
    const auto bytes = clutter::base::readTextFile(path);
    if (!bytes) {
        return 0;
    }
    const std::string_view text = clutter::dsp::textOf(*bytes);
    const std::size_t found = countUpTo(kMaxNames + 1, text);
    if (found > kMaxNames) {
        return 0;
    }
    clutter::base::adopt(*names, slotsOf(text, found));
    count = static_cast<int>(found);
    return 1;
}

int CDSP::getfnameonly(char* path, char* name) {
    if (path == nullptr || name == nullptr) {
        return 0;
    }
    // Only the backslash separates directories: a slash belongs to the name.
    const char* separator = std::strrchr(path, '\\');
    if (separator == nullptr) {
        return 0;
    }
    const bool fits = std::strlen(separator) < kNameBytes;
    clutter::base::copyText(name, kNameBytes, fits ? separator + 1 : " ");
    return fits ? 1 : 0;
}
