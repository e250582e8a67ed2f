#include "options/layout_option.h"

#include <algorithm>
#include <stdexcept>

namespace cli {

using namespace scan;

namespace {

/* One that cannot be read may be: it is complained about later. */
bool mayBePolarData(const std::string& path) {
    try {
        return recognise(path) == FileFormat::kPolarData;
    } catch (const std::runtime_error&) {
        return true;
    }
}

}  // namespace

CLI::Option* addLayoutOption(CLI::App& command, ReadOptions& options) {
    return command
        .add_option("--layout", options.polarLayout,
                    "How the gates of a polar data file are packed: 252, 260 or 280 (products 2211 "
                    "and 2212)")
        ->check(CLI::IsMember({252, 260, 280}));
}

void requireLayoutUsed(const ReadOptions& options, const std::vector<std::string>& inputs) {
    if (options.polarLayout == 0) return;
    if (std::none_of(inputs.begin(), inputs.end(), mayBePolarData))
        throw CLI::ValidationError("--layout", "goes with polar data files only");
}

}  // namespace cli
