/* class_codes.cpp - which classes there are, and by which numbers files name them. */
#include "commands/classify/class_codes.h"

#include "commands/classify/jobs.h"
#include "scan/formats/containers/write_containers.h"
#include "scan/text.h"

namespace cli {

namespace {

/* Ending of the outputs; that of the input where it is not asked for. */
std::string endingOf(const ClassifyCall& call) {
    if (!isDirectoryName(call.output)) {
        return scan::endingOf(call.output);
    }
    return call.format.empty() ? "" : std::string(".").append(call.format);
}

}  // namespace

void addClassesOptions(CLI::App& command, ClassifyCall& call) {
    command.add_flag("--remove-isolated", call.removeIsolated,
                     "Turn isolated precipitation gates into clutter");
    command
        .add_option("--classes", call.classes,
                    "ground: precipitation and ground clutter; all: sea (6) and wind-turbine "
                    "clutter (7) too")
        ->check(CLI::IsMember({"ground", "all"}))
        ->capture_default_str();
}

void addCodesOptions(CLI::App& command, ClassifyCall& call) {
    command
        .add_option("--codes", call.codes,
                    "Numbers of the classes in ODIM_H5 and CfRadial: library (0 precipitation, 3 "
                    "noise, 5 to 7 clutter), or services, as weather services share them (64, "
                    "232, 148, 152, 175)")
        ->check(CLI::IsMember({"library", "services"}))
        ->capture_default_str();
    command.add_flag("--class-quantity", call.classQuantity,
                     "ODIM_H5: write the classes as a quantity CLASS among the data too");
}

void requireCodesUsed(const ClassifyCall& call) {
    const std::string ending = endingOf(call);
    const bool sameAsInput = ending.empty() && isDirectoryName(call.output);
    if (call.codes != "library" && !sameAsInput && !scan::isContainerEnding(ending)) {
        throw CLI::ValidationError("--codes", "goes with ODIM_H5 and CfRadial outputs");
    }
    if (call.classQuantity && !sameAsInput && ending.rfind(".h", 0) != 0) {
        throw CLI::ValidationError("--class-quantity", "goes with ODIM_H5 outputs");
    }
}

}  // namespace cli
