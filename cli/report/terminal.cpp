/* terminal.cpp - replaces what a terminal would obey in text from outside. */
#include "report/terminal.h"

#include <cstddef>
#include <string_view>

namespace cli {

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

/* Bytes of the sequence that begins with lead; 0 for a byte that begins none. */
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xc2 || lead > 0xf4) {
        return 0;
    }
    return lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
}

/* Bytes of the character at the beginning of text; 0 where it is damaged. */
std::size_t characterLength(std::string_view text) {
    const std::size_t length = sequenceLength(byteAt(text, 0));
    if (length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xc0) != 0x80) {
            return 0;
        }
    }
    return length;
}

/* U+0000 to U+001f, U+007f, and U+0080 to U+009f in two bytes. */
bool isControl(std::string_view character) {
    const unsigned char lead = byteAt(character, 0);
    return lead < 0x20 || lead == 0x7f || (lead == 0xc2 && byteAt(character, 1) < 0xa0);
}

}  // namespace

std::string forTerminal(const std::string& text) {
    std::string result;
    std::string_view rest = text;
    while (!rest.empty()) {
        const std::size_t length = characterLength(rest);
        if (length == 0 || isControl(rest.substr(0, length))) {
            result += '?';
        } else {
            result += rest.substr(0, length);
        }
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

}  // namespace cli
