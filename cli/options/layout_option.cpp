/* layout_option.cpp - the option --layout, and whether any input has a use for it. */
#include "options/layout_option.h"

#include <algorithm>
#include <stdexcept>

namespace cli {

namespace {

/* An input that cannot be read counts as one: reading it will report the reason. */
bool mayBePolarData(const InputFile& input) {
    try {
        return scan::recognise(input.path()) == scan::FileFormat::kPolarData;
    } catch (const std::runtime_error&) {
        return true;
    }
}

void requireAnyPolarData(bool any) {
    if (!any) {
        throw CLI::ValidationError("--layout", "goes with polar data files only");
    }
}

}  // namespace

CLI::Option* addLayoutOption(CLI::App& command, scan::ReadOptions& options) {
    return command
        .add_option("--layout", options.polarLayout,
                    "How the gates of a polar data file are packed: 252, 260 or 280 (products 2211 "
                    "and 2212)")
        ->check(CLI::IsMember({252, 260, 280}));
}

void requireLayoutUsed(const scan::ReadOptions& options, const std::vector<InputFile>& inputs) {
    if (options.polarLayout != 0) {
        requireAnyPolarData(std::any_of(inputs.begin(), inputs.end(), mayBePolarData));
    }
}

void requireLayoutUsed(const scan::ReadOptions& options, const InputFile& input) {
    if (options.polarLayout != 0) {
        requireAnyPolarData(mayBePolarData(input));
    }
}

}  // namespace cli
