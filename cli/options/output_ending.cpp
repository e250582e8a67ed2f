/* output_ending.cpp - names of output files that a command refuses. */
#include "options/output_ending.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include "picture/canvas.h"
#include "scan/text.h"

namespace cli {

void requireEnding(const std::string& option, const std::string& path,
                   std::initializer_list<const char*> theirs) {
    constexpr const char* kTaken[] = {".uf",  ".csv", ".asc", ".bin", ".pol", ".dx",
                                      ".png", ".svg", ".pdf", ".h5",  ".hdf", ".hdf5",
                                      ".nc",  ".nc4", ".gz",  ".bz2"};
    const std::string ending = scan::endingOf(path);
    const auto is = [&](const char* other) { return ending == other; };
    if (std::none_of(std::begin(kTaken), std::end(kTaken), is)) {
        return;
    }
    if (std::any_of(theirs.begin(), theirs.end(), is)) {
        return;
    }
    std::string names;
    for (const char* name : theirs) {
        names += std::string(name) + ", ";
    }
    throw CLI::ValidationError(option, "a " + ending + " file cannot be written here: name it " +
                                           names + "or for a field record .plv");
}

void requirePictureEnding(const std::string& option, const std::string& path) {
    try {
        checkPictureEnding(path);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(option, error.what());
    }
}

void requireOther(const std::string& option, const std::string& output, const std::string& input) {
    std::error_code ignored;
    if (std::filesystem::equivalent(input, output, ignored)) {
        throw CLI::ValidationError(option, "would overwrite " + input);
    }
}

}  // namespace cli
