/*
 * Reads a file of settings into a context, and examines it as a user's: what the library does not
 * know is a problem that the user hears of.
 */
#include <cstddef>
#include <cstdint>
#include <string>

#include "clutterclassifier/Crres.h"
#include "clutterclassifier/classifier.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"
#include "scan/process/configuration.h"

namespace {

using namespace clutter::fuzz;

void count(void* messages, const char*) {
    ++*static_cast<std::size_t*>(messages);
}

/* Messages of the library about the settings of a file. */
std::size_t complaints(std::string path) {
    std::size_t messages = 0;
    clutter_set_message_sink(count, &messages);
    Crres context;
    require(context.readinitialconfiguration(path.data()) == 0, "the reader always returns 0");
    clutter_set_message_sink(nullptr, nullptr);
    for (const char* text : {context.mfdir, context.vprfile}) {
        require(std::string(text).size() < 1024, "texts are terminated");
    }
    return messages;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = inputFile(data, size);
    const std::size_t unknown = complaints(path);
    const scan::Configuration examined = scan::examineConfigurationFile(path);
    // After a missing value the library takes keys for values. The examination goes on with the
    // next key, so that the problems differ: only that there is one can be compared.
    require(unknown == 0 || !examined.problems.empty(), "an unknown key is a problem");
    for (const scan::ConfigurationProblem& problem : examined.problems) {
        require(!problem.text.empty() && problem.line >= 0, "a problem has a text and a line");
    }
    for (const std::string& key : examined.keys) {
        require(examined.names(key), "keys are found by their names");
    }
    return 0;
}
