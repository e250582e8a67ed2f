#include "options/membership_dir.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "scan/classes/membership_files.h"

namespace cli {

using namespace scan;

namespace {

namespace fs = std::filesystem;

}  // namespace

std::string membershipDirectory(const std::string& override) {
    if (!override.empty()) return withSeparator(override);
    const char* variable = std::getenv("CLUTTERCLASSIFIER_MEMBERSHIP");
    if (variable && *variable) return withSeparator(variable);
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path installed =
        program.parent_path().parent_path() / CLUTTERCLASSIFIER_INSTALLED_MEMBERSHIP;
    if (!error && fs::is_directory(installed, error)) return withSeparator(installed.string());
    if (fs::is_directory(CLUTTERCLASSIFIER_SOURCE_MEMBERSHIP, error))
        return withSeparator(CLUTTERCLASSIFIER_SOURCE_MEMBERSHIP);
    throw std::runtime_error(
        "no membership directory found: name it with --membership or "
        "CLUTTERCLASSIFIER_MEMBERSHIP");
}

}  // namespace cli
