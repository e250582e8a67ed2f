/*
 * Numbers in text, converted as by the C library in the "C" locale.
 */
#include "base/text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "base/charconv.h"

namespace clutter::base {
namespace {

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isHex(std::string_view digits) {
    return digits.size() > 2 && digits[0] == '0' && lower(digits[1]) == 'x';
}

/* The value of a number too large or too small for a double. from_chars does not say which it is,
 * but its exponent does. */
double outOfRange(std::string_view digits, bool hex) {
    const char mark = hex ? 'p' : 'e';
    long exponent = 0;
    long scale = 0;  // power of ten (or sixteen) of the first digit other than zero
    bool seenPoint = false, seenDigit = false;
    for (std::size_t i = 0; i < digits.size() && lower(digits[i]) != mark; ++i) {
        if (digits[i] == '.') {
            seenPoint = true;
        } else {
            seenDigit = seenDigit || digits[i] != '0';
            if (seenDigit && !seenPoint) {
                ++scale;
            }
            if (!seenDigit && seenPoint) {
                --scale;
            }
        }
    }
    const std::size_t at = digits.find_first_of(hex ? "pP" : "eE");
    if (at != std::string_view::npos) {
        const std::string_view text = digits.substr(at + 1);
        const bool negative = !text.empty() && text[0] == '-';
        const std::size_t skip = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
        const auto [end, error] =
            std::from_chars(text.data() + skip, text.data() + text.size(), exponent);
        (void)end;
        constexpr long kMax = std::numeric_limits<int>::max();
        if (error == std::errc::result_out_of_range || exponent > kMax) {
            exponent = kMax;
        }
        if (negative) {
            exponent = -exponent;
        }
    }
    return (hex ? 4 * scale : scale) + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

}  // namespace

void copyText(char* destination, std::size_t capacity, const char* source) {
    const std::size_t length = source ? strnlen(source, capacity - 1) : 0;
    if (length > 0) {
        std::memmove(destination, source, length);
    }
    destination[length] = '\0';
}

std::optional<std::string_view> TokenReader::next() {
    std::size_t start = 0;
    while (start < rest_.size() && isSpace(rest_[start])) {
        ++start;
    }
    if (start == rest_.size()) {
        return std::nullopt;
    }
    std::size_t end = start;
    while (end < rest_.size() && !isSpace(rest_[end])) {
        ++end;
    }
    const std::string_view token = rest_.substr(start, end - start);
    rest_.remove_prefix(end);
    return token;
}

double parseNumber(std::string_view token) {
    const bool negative = !token.empty() && token[0] == '-';
    if (!token.empty() && (token[0] == '-' || token[0] == '+')) {
        token.remove_prefix(1);
    }
    if (!token.empty() && (token[0] == '-' || token[0] == '+')) {
        return 0.0;
    }
    double value = 0.0;
    const bool hex = isHex(token);
    const std::string_view digits = hex ? token.substr(2) : token;
    // The conversion itself would accept another sign or a word here.
    if (hex && digits[0] != '.' && std::isxdigit(static_cast<unsigned char>(digits[0])) == 0) {
        return negative ? -0.0 : 0.0;
    }
    const auto format = hex ? std::chars_format::hex : std::chars_format::general;
    const auto [end, error] =
        base::from_chars(digits.data(), digits.data() + digits.size(), value, format);
    if (error == std::errc::invalid_argument) {
        return hex && negative ? -0.0 : 0.0;
    }
    if (error == std::errc::result_out_of_range) {
        value = outOfRange(digits.substr(0, static_cast<std::size_t>(end - digits.data())), hex);
    }
    return negative ? -value : value;
}

long long parseInteger(std::string_view token) {
    const bool negative = !token.empty() && token[0] == '-';
    if (!token.empty() && token[0] == '+') {
        token.remove_prefix(1);
    }
    if (!negative && !token.empty() && token[0] == '-') {
        return 0;
    }
    long long value = 0;
    const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    (void)end;
    if (error == std::errc::result_out_of_range) {
        using Limits = std::numeric_limits<long long>;
        return negative ? Limits::min() : Limits::max();
    }
    return value;
}

}  // namespace clutter::base
