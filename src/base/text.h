/*
 * text.h - bounded copies of strings, and tokens and numbers in text, whatever the locale.
 */
#ifndef CLUTTER_BASE_TEXT_H
#define CLUTTER_BASE_TEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace clutter::base {

/* Copies a string into a fixed buffer: cut where it does not fit, always terminated. A null source
 * counts as an empty string. Source and destination may overlap. */
void copyText(char* destination, std::size_t capacity, const char* source);

template <std::size_t N>
void copyText(char (&destination)[N], const char* source) {
    copyText(destination, N, source);
}

/* Returns the tokens of a text, separated by white space, one by one. They may have any length. */
class TokenReader {
  public:
    explicit TokenReader(std::string_view text) : rest_(text) {}
    std::optional<std::string_view> next();

  private:
    std::string_view rest_;
};

/* The number at the start of a token, as the C library converts it in the "C" locale: 0 without a
 * number, an infinity past the largest double. */
double parseNumber(std::string_view token);

/* The integer at the start of a token: 0 without one, the nearest 64-bit integer when it does not
 * fit. */
long long parseInteger(std::string_view token);

}  // namespace clutter::base

#endif
