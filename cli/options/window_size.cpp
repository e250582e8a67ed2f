/* window_size.cpp - two odd sizes with an x between them. */
#include "options/window_size.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace cli {

namespace {

/* Consumes a leading integer from text; 0 where there is none or it is too large. */
int takeSize(std::string_view& text) {
    int size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc() ? size : 0;
}

bool isWindow(const WindowSize& size, int largest) {
    const auto fits = [&](int side) { return side >= 1 && side <= largest && side % 2 == 1; };
    return fits(size.gates) && fits(size.rays) && size.gates * size.rays > 1;
}

}  // namespace

WindowSize parseWindow(const std::string& option, const std::string& text, int largest) {
    std::string_view rest = text;
    WindowSize size{takeSize(rest), 0};
    if (rest.starts_with('x')) {
        rest.remove_prefix(1);
        size.rays = takeSize(rest);
    }
    if (!rest.empty() || !isWindow(size, largest)) {
        throw CLI::ValidationError(option, "expected two odd sizes up to " +
                                               std::to_string(largest) +
                                               ", GATESxRAYS, as in 5x3: " + text);
    }
    return size;
}

}  // namespace cli
