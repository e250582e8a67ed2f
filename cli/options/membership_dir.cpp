/* membership_dir.cpp - the directory of membership functions: named, or beside the program. */
#include "options/membership_dir.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "scan/classes/membership_files.h"
#include "scan/own_file.h"

namespace cli {

namespace fs = std::filesystem;

fs::path shippedDirectory() {
    return (scan::ownFile().parent_path().parent_path() / CLUTTERCLASSIFIER_INSTALLED_MEMBERSHIP)
        .parent_path();
}

std::string membershipDirectory(const std::string& override) {
    if (!override.empty()) {
        return scan::withSeparator(override);
    }
    const char* variable = std::getenv("CLUTTERCLASSIFIER_MEMBERSHIP");
    if (variable != nullptr && *variable != '\0') {
        return scan::withSeparator(variable);
    }
    std::error_code error;
    const fs::path shipped = shippedDirectory() / "membership";
    if (fs::is_directory(shipped, error)) {
        return scan::withSeparator(shipped.string());
    }
    throw std::runtime_error(
        "no membership directory found: name it with --membership or "
        "CLUTTERCLASSIFIER_MEMBERSHIP");
}

}  // namespace cli
