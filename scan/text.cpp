/* text.cpp - independent of the locale. */
#include "scan/text.h"

#include <filesystem>

namespace scan {

std::string lowerCase(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}

std::string endingOf(const std::string& path) {
    const std::filesystem::path name(path);
    const std::string ending = lowerCase(name.extension().string());
    const bool packed = ending == ".gz" && lowerCase(name.stem().extension().string()) == ".uf";
    return packed ? ".uf" : ending;
}

std::string printable(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += c >= 0x20 && c < 0x7f ? c : '?';
    }
    const auto end = result.find_last_not_of(' ');
    return end == std::string::npos ? "" : result.substr(0, end + 1);
}

}  // namespace scan
