/* classify_options.h - the options that say how a sweep is classified. */
#ifndef CLI_OPTIONS_CLASSIFY_OPTIONS_H
#define CLI_OPTIONS_CLASSIFY_OPTIONS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "scan/classes/classify_sweep.h"

namespace cli {

struct ClassifyArguments {
    std::string inputs, map, membership, window = "5x3", neighbourhood = "5x3";
    std::optional<double> minSnrDb, radarConstantDb;
};

/* --map, --min-snr, --radar-constant, --membership. */
void addFieldOptions(CLI::App& command, ClassifyArguments& arguments);

/* --neighbourhood. */
void addNeighbourhoodOption(CLI::App& command, ClassifyArguments& arguments);

/* --inputs, --window, --neighbourhood. */
void addInputOptions(CLI::App& command, ClassifyArguments& arguments);

/* All of them except the membership directory: if it is missing, the call is still sound. Throws
 * CLI::ValidationError. */
scan::ClassifyOptions classifyOptionsFrom(const ClassifyArguments& arguments);

}  // namespace cli

#endif
