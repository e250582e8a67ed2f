/*
 * A membership file token by token, with the line that each is on.
 */
#include "classifier/functions/strict_table.h"

#include <cmath>
#include <cstddef>
#include <string_view>
#include <vector>

#include "base/charconv.h"
#include "base/files/regular_file.h"
#include "base/text.h"
#include "classifier/functions/refusal.h"

namespace clutter::classifier {
namespace {

constexpr std::size_t kMaxShown = 40;  // characters of a token in a message

[[noreturn]] void refuse(const std::string& path, std::size_t line, const std::string& what) {
    throw Refusal(CLUTTER_MALFORMED, path + ": line " + std::to_string(line) + ": " + what);
}

/* A token in quotes, safe to print. */
std::string quoted(std::string_view token) {
    std::string text = "\"";
    for (const char c : token.substr(0, kMaxShown)) {
        text += c >= ' ' && c <= '~' ? c : '?';
    }
    return text + (token.size() > kMaxShown ? "...\"" : "\"");
}

/* Hands out the numbers of a file. */
class Numbers {
  public:
    Numbers(const std::string& path, std::string_view text)
        : path_(path), tokens_(text), counted_(text.data()) {}

    /* False at the end of the file. */
    bool next(double& value) {
        const auto token = tokens_.next();
        if (!token) {
            return false;
        }
        for (; counted_ != token->data(); ++counted_) {
            line_ += *counted_ == '\n' ? 1 : 0;
        }
        const std::string_view digits = token->substr((*token)[0] == '+' ? 1 : 0);
        const auto [end, error] =
            base::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (error != std::errc() || end != digits.data() + digits.size() || !std::isfinite(value)) {
            refuse(path_, line_, quoted(*token) + " is not a finite number");
        }
        value = base::parseNumber(*token);  // as everything else reads it
        return true;
    }

    std::size_t line() const { return line_; }

  private:
    const std::string& path_;
    base::TokenReader tokens_;
    const char* counted_;
    std::size_t line_ = 1;
};

}  // namespace

fuzzy::Points readStrictTable(const std::string& path) {
    std::string problem;
    const auto bytes = base::readRegularFile(path.c_str(), &problem);
    if (!bytes) {
        throw Refusal(CLUTTER_NOT_READ, path + ": " + problem);
    }
    Numbers numbers(path, {reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    fuzzy::Points points;
    for (double x = 0.0; numbers.next(x);) {
        double y = 0.0;
        if (!points.x.empty() && x < points.x.back()) {
            refuse(path, numbers.line(), "the abscissa is below the one before");
        }
        if (!numbers.next(y)) {
            refuse(path, numbers.line(), "an abscissa without a degree");
        }
        if (y < 0.0) {
            refuse(path, numbers.line(), "the degree is negative");
        }
        points.x.push_back(x);
        points.y.push_back(y);
    }
    if (points.x.empty()) {
        throw Refusal(CLUTTER_MALFORMED, path + ": holds no points");
    }
    return points;
}

}  // namespace clutter::classifier
