/* Reads a list of file names: the words of the text, each cut after 1,023 characters. */
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

constexpr std::size_t kSlot = 1024;

std::vector<std::string> wordsOf(const std::string& text) {
    const std::string blanks = " \t\n\v\f\r";
    std::vector<std::string> words;
    for (std::size_t at = text.find_first_not_of(blanks); at != std::string::npos;) {
        const std::size_t end = std::min(text.find_first_of(blanks, at), text.size());
        words.push_back(text.substr(at, std::min(end - at, kSlot - 1)));
        at = text.find_first_not_of(blanks, end);
    }
    return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = inputFile(data, size);
    char* names = nullptr;
    int count = 0;
    require(CDSP().OnReadFNames(in.data(), &names, count) == 1, "every text is a list");
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> words = wordsOf(text);
    require(static_cast<std::size_t>(count) == words.size(), "one name a word");
    for (std::size_t i = 0; i < words.size(); ++i) {
        const char* slot = names + kSlot * i;
        require(strnlen(slot, kSlot) < kSlot, "names are terminated");
        require(std::strcmp(slot, words[i].c_str()) == 0, "a name is its word");
    }
    delete[] names;
    return 0;
}
