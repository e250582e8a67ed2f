/*
 * text.h - bounded copies, white-space separated tokens and numbers in text, whatever the locale.
 */
#ifndef CLUTTER_BASE_TEXT_H
#define CLUTTER_BASE_TEXT_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace clutter::base {

/* Copies a text into a fixed buffer, cut where it does not fit and always terminated. A null source
 * is an empty text; source and destination may be the same. */
void copyText(char* destination, std::size_t capacity, const char* source);

template <std::size_t N>
void copyText(char (&destination)[N], const char* source) {
    copyText(destination, N, source);
}

/* Hands out the white-space separated tokens of a text, of any length. */
class TokenReader {
  public:
    explicit TokenReader(std::string_view text) : rest_(text) {}
    std::optional<std::string_view> next();

  private:
    std::string_view rest_;
};

/* The number that a token starts with, as the C library converts it in the "C" locale: 0 when there
 * is none, an infinity beyond the largest double. */
double parseNumber(std::string_view token);

/* The whole number that a token starts with: 0 when there is none, the nearest 64-bit number when
 * it has no room. */
long long parseInteger(std::string_view token);

}  // namespace clutter::base

#endif
