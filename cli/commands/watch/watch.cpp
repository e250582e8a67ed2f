/* watch.cpp - the command `watch`: files are classified or cleaned as they arrive. */
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "commands/classify/class_codes.h"
#include "commands/classify/jobs.h"
#include "commands/commands.h"
#include "commands/watch/run.h"
#include "options/membership_dir.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char kFooter[] =
    "Examples:\n"
    "  clutterclassifier watch incoming/ -o classes/\n"
    "  clutterclassifier watch incoming/ -o rain/ --clean --format h5 --json\n"
    "\n"
    "A file is complete when it is closed after writing, or renamed into DIR. Its output appears\n"
    "complete or not at all. Started again, the command goes on where it was. OUT/failures.csv\n"
    "lists files that failed, OUT/status.prom has figures for a monitoring system.";

/* Refuses what would make every file fail, or the command read its own outputs. */
void requireSoundCall(const WatchCall& call) {
    if (!fs::is_directory(call.folder)) {
        throw CLI::ValidationError(call.folder + ": there is no such folder");
    }
    std::error_code ignored;
    if (fs::equivalent(call.folder, call.classify.output, ignored)) {
        throw CLI::ValidationError("--output", "must be another folder than DIR");
    }
}

void runWatch(WatchCall& call) {
    requireSoundCall(call);
    (void)classifyOptionsFrom(call.classify.how);
    (void)membershipDirectory(call.classify.how.membership);
    if (call.clean) {
        call.classify.clean = scan::CleanOptions{scan::parseClasses("precipitation"), {}};
    }
    std::error_code error;
    fs::create_directories(call.classify.output, error);
    if (error) {
        throw std::runtime_error(call.classify.output + ": " + error.message());
    }
    WatchRun(call).perform();
}

}  // namespace

void addWatchCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("watch", "Classify or clean files as they arrive in a folder");
    command->footer(kFooter);
    const auto call = std::make_shared<WatchCall>();
    command->add_option("DIR", call->folder, "Folder in which files arrive")->required();
    command->add_option("-o,--output", call->classify.output, "Folder of the outputs")->required();
    command
        ->add_option("--format", call->classify.format,
                     "Format of the outputs (default: that of the input, else uf)")
        ->check(CLI::IsMember({"uf", "h5", "nc", "nc4"}));
    command->add_flag("--clean", call->clean,
                      "Write what `clean` writes, else what `classify` does");
    command->add_flag("--certainty", call->classify.certainty,
                      "Also write the probability of precipitation (PR) and the margin (MA)");
    command->add_flag("--json", call->json, "Print one JSON object a file");
    command->add_flag("-q,--quiet", call->classify.quiet, "Print errors only");
    addInputOptions(*command, call->classify.how);
    addFieldOptions(*command, call->classify.how);
    addClassesOptions(*command, call->classify);
    command->callback([call] { runWatch(*call); });
}

}  // namespace cli
