/* settings.cpp - reads, prints and checks the settings of the processing chain. */
#include "commands/process/settings.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "options/membership_dir.h"
#include "report/failure.h"
#include "report/terminal.h"
#include "scan/process/configuration.h"
#include "scan/quiet_library.h"

namespace cli {

namespace {

/* The settings that the program needs itself. */
struct Settings {
    int what = scan::kAllStages;
    std::optional<int> mask;
    std::string membership;
};

scan::Configuration examine(const std::string& path) {
    scan::Configuration configuration =
        naming(path, [&] { return scan::examineConfigurationFile(path); });
    for (const scan::ConfigurationProblem& problem : configuration.problems) {
        std::fprintf(stderr, "%s:%d: %s\n", forTerminal(path).c_str(), problem.line,
                     forTerminal(problem.text).c_str());
    }
    return configuration;
}

Settings readSettings(const std::string& path) {
    Settings settings;
    if (path.empty()) {
        return settings;
    }
    const scan::Configuration pairs = examine(path);
    for (const scan::ConfigurationProblem& problem : pairs.problems) {
        if (problem.fatal) {
            throw FileError(path + ": contains invalid settings");
        }
    }
    const auto context = std::make_unique<Crres>();
    std::string name = path;
    const scan::QuietLibrary quiet;
    context->readinitialconfiguration(name.data());
    if (pairs.names("WHAT2DO")) {
        settings.what = context->what2do;
    }
    // An example file repeats the default inputs: they do not count as a request.
    if (context->clutteralg != scan::kDefaultInputs) {
        settings.mask = context->clutteralg;
    }
    if (pairs.names("CLUTTER_MFS")) {
        settings.membership = context->mfdir;
    }
    return settings;
}

/* The directory for an example; empty where there is none that a settings file can name. */
std::string exampleMembership() {
    try {
        const std::string directory = membershipDirectory("");
        const bool splits = directory.find_first_of(" \t\n\v\f\r") != std::string::npos;
        return splits ? "" : directory;
    } catch (const std::runtime_error&) {
        return "";
    }
}

}  // namespace

scan::ProcessOptions processOptionsFrom(const ProcessCall& call) {
    const Settings settings = readSettings(call.config);
    scan::ProcessOptions options;
    options.classify = classifyOptionsFrom(call.how);
    options.classify.mask = settings.mask;
    options.classify.removeIsolated = true;
    options.classify.certainty = call.certainty;
    options.configuration = call.config;
    options.what = call.what.value_or(settings.what);
    options.freezingLevelM = call.freezingLevelM;
    options.seed = call.seed;
    if ((options.what & scan::kClassifyStage) != 0) {
        const std::string& given = call.how.membership;
        options.classify.membership =
            membershipDirectory(given.empty() ? settings.membership : given);
    }
    return options;
}

void printConfiguration() {
    std::fputs(scan::exampleConfiguration(exampleMembership()).c_str(), stdout);
    std::fflush(stdout);
    std::fprintf(stderr,
                 "\nEach line is a key and its value, separated by white space. Case matters, the "
                 "last of equal\nkeys counts, and there are no comments.\n\n%s",
                 scan::configurationTable().c_str());
}

void checkConfiguration(const std::string& path) {
    const scan::Configuration configuration = examine(path);
    if (!configuration.problems.empty()) {
        throw CommandFailed{};
    }
    std::printf("%s: %zu settings, nothing wrong\n", forTerminal(path).c_str(),
                configuration.keys.size());
}

}  // namespace cli
