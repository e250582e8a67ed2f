/*
 * Numbers into a pending text, which is written in large pieces.
 */
#include "base/text_writer.h"

#include <cstddef>

#include "base/charconv.h"

namespace clutter::base {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{1} << 16;
/* The largest double has 309 digits before the point; no caller wants more than 6 after it. */
constexpr std::size_t kMaxNumberChars = 400;
constexpr int kDigitsOfG = 6;

void append(std::string& out, double value, std::chars_format format, int precision) {
    char digits[kMaxNumberChars];
    const auto end = base::to_chars(digits, digits + sizeof digits, value, format, precision).ptr;
    out.append(digits, end);
}

}  // namespace

TextWriter& TextWriter::text(std::string_view piece) {
    pending_ += piece;
    if (pending_.size() >= kPieceBytes) {
        flush();
    }
    return *this;
}

TextWriter& TextWriter::integer(long long value) {
    return text(std::to_string(value));
}

TextWriter& TextWriter::fixed(double value, int decimals) {
    append(pending_, value, std::chars_format::fixed, decimals);
    return text("");
}

TextWriter& TextWriter::general(double value) {
    append(pending_, value, std::chars_format::general, kDigitsOfG);
    return text("");
}

void TextWriter::flush() {
    std::fwrite(pending_.data(), 1, pending_.size(), stream_);
    pending_.clear();
}

std::string fixedText(double value, int decimals) {
    std::string out;
    append(out, value, std::chars_format::fixed, decimals);
    return out;
}

}  // namespace clutter::base
