/* membership_files.cpp - the library's own check of the files. */
#include "scan/classes/membership_files.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "clutterclassifier/classifier.hpp"

namespace scan {
namespace {

constexpr std::size_t kMaxDirectory = 1000;  // the context's buffer holds 1,024 characters

}  // namespace

std::string withSeparator(std::string directory) {
    if (directory.back() != '/') {
        directory += '/';
    }
    if (directory.size() > kMaxDirectory) {
        throw std::runtime_error("the name of the membership directory is too long");
    }
    return directory;
}

void requireMembershipFiles(const std::string& directory, int mask, bool allClasses) {
    const clutter::Classifier checked(directory, static_cast<std::uint32_t>(mask),
                                      allClasses ? CLUTTER_WITH_ALL_CLUTTER : 0);
}

}  // namespace scan
