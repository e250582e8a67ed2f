/* plot.cpp - the command `membership plot`. */
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "commands/membership/membership.h"
#include "options/output_ending.h"
#include "picture/membership_sheet.h"
#include "report/failure.h"
#include "report/terminal.h"

namespace cli {
namespace {

struct SheetArguments {
    std::vector<std::string> directories;
    std::string output;
    int widthPx = 0;
};

void runSheet(const SheetArguments& arguments) {
    requirePictureEnding("--output", arguments.output);
    std::vector<MembershipSheet> sheets;
    for (const std::string& directory : arguments.directories) {
        naming(directory, [&] {
            sheets.push_back({forTerminal(directory), scan::readPairs(directory)});
        });
    }
    drawMembership(sheets, arguments.widthPx, arguments.output);
}

}  // namespace

void addSheetCommand(CLI::App& membership) {
    auto arguments = std::make_shared<SheetArguments>();
    CLI::App* command = membership.add_subcommand(
        "plot", "Draw all pairs of a directory, and those of a second one over them");
    command->add_option("DIR", arguments->directories, "One or two directories")
        ->required()
        ->expected(1, 2);
    command->add_option("-o,--output", arguments->output, "Picture: FILE.png, FILE.svg or FILE.pdf")
        ->required();
    command->add_option("--width", arguments->widthPx, "Width of the picture in pixels")
        ->check(CLI::Range(240, 10000));
    command->callback([arguments] { runSheet(*arguments); });
}

}  // namespace cli
