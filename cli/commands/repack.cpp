/* repack.cpp - the command `repack`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "clutterclassifier/clutterclassifier.h"
#include "options/input_file.h"
#include "options/layout_option.h"
#include "options/output_ending.h"
#include "report/failure.h"
#include "report/notes.h"
#include "report/terminal.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/writing/output_file.h"

namespace cli {

namespace {

struct RepackArguments {
    std::string input, output;
    scan::ReadOptions read;
};

constexpr const char* kUnchanged =
    "would not become shorter: that needs five or seven fields (seven with --layout), an elevation "
    "above 1 degree, a first gate at 0 and gates above 10 km";

/* The library would read the gates of these seven fields as those of product 2211. */
constexpr const char* kMistaken = "polar data, product 2214";

void repack(const RepackArguments& arguments, const InputFile& input) {
    requireOther("OUT", arguments.output, arguments.input);
    if (scan::recognise(input.path()) != scan::FileFormat::kPolarData) {
        throw std::runtime_error("is not a polar data file");
    }
    const scan::Scan scan = readInput(input, arguments.read);
    noteDamage(scan, Beside::kResults);
    if (scan.format == kMistaken) {
        throw std::runtime_error("product 2214 cannot be repacked");
    }
    scan::OutputFile file(arguments.output);
    CThuPolDaFor polar;
    std::string in = input.path(), out = file.temporary();
    errno = 0;
    if (polar.PackAgainDataFiles(in.data(), out.data(), arguments.read.polarLayout) != 1) {
        if (const int reason = errno; reason != 0) {
            scan::failWriting(file.target(), reason);
        }
        throw std::runtime_error(kUnchanged);
    }
    const scan::Scan shorter = scan::readScan(out, arguments.read);
    file.commit();
    std::printf("wrote %s: %d instead of %d gates a ray\n", forTerminal(arguments.output).c_str(),
                shorter.sweeps[0].ngates, scan.sweeps[0].ngates);
}

}  // namespace

void addRepackCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("repack", "Shorten the rays of a polar data file to 10 km of height");
    const auto arguments = std::make_shared<RepackArguments>();
    command->add_option("INPUT", arguments->input, "Polar data file")->required();
    command->add_option("OUT", arguments->output, "File to write")->required();
    addLayoutOption(*command, arguments->read);
    command->footer("Example: clutterclassifier repack scan.dat shorter.dat --layout 280");
    command->callback([arguments] {
        const InputFile input(arguments->input);
        naming(input.name(), [&] { repack(*arguments, input); });
    });
}

}  // namespace cli
