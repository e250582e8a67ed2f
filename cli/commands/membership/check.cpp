/* check.cpp - the command `membership check`. */
#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>

#include "commands/membership/membership.h"
#include "report/failure.h"
#include "report/terminal.h"
#include "scan/membership/check.h"

namespace cli {
namespace {

void printFinding(const std::string& directory, const scan::Finding& finding) {
    const std::string file = forTerminal(finding.file.empty() ? directory : finding.file);
    const char* kind = finding.isError ? "error" : "warning";
    if (finding.line > 0) {
        std::printf("%s: line %d: %s: %s\n", file.c_str(), finding.line, kind,
                    finding.text.c_str());
    } else {
        std::printf("%s: %s: %s\n", file.c_str(), kind, finding.text.c_str());
    }
}

void runCheck(const std::string& directory) {
    const scan::MembershipCheck check =
        naming(directory, [&] { return scan::checkMembership(directory); });
    for (const scan::Finding& finding : check.findings) {
        printFinding(directory, finding);
    }
    const int errors = check.errors();
    std::printf("%s: %d files, %d errors, %d warnings\n", forTerminal(directory).c_str(),
                check.files, errors, static_cast<int>(check.findings.size()) - errors);
    if (errors > 0) {
        throw CommandFailed{};
    }
}

}  // namespace

void addCheckCommand(CLI::App& membership) {
    auto directory = std::make_shared<std::string>();
    CLI::App* command =
        membership.add_subcommand("check", "Say what is wrong with the files of a directory");
    command->add_option("DIR", *directory, "Directory of membership functions")->required();
    command->footer("The exit code is 1 where there is an error, not for warnings alone.");
    command->callback([directory] { runCheck(*directory); });
}

}  // namespace cli
