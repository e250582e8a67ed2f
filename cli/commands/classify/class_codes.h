/* class_codes.h - options of `classify` and `clean` about the classes that they write. */
#ifndef CLI_COMMANDS_CLASSIFY_CLASS_CODES_H
#define CLI_COMMANDS_CLASSIFY_CLASS_CODES_H

#include <CLI/CLI.hpp>

#include "commands/classify/call.h"

namespace cli {

/* --remove-isolated and --classes. */
void addClassesOptions(CLI::App& command, ClassifyCall& call);

/* --codes and --class-quantity. */
void addCodesOptions(CLI::App& command, ClassifyCall& call);

/* Throws CLI::ValidationError where the output has no use for them. */
void requireCodesUsed(const ClassifyCall& call);

}  // namespace cli

#endif
