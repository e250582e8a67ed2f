/* membership.cpp - the command `membership`: check, train and plot membership functions. */
#include "commands/membership/membership.h"

#include <CLI/CLI.hpp>

#include "commands/commands.h"

namespace cli {

void addMembershipCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("membership", "Check, train and draw membership functions");
    command->require_subcommand(1);
    addCheckCommand(*command);
    addTrainCommand(*command);
    addSheetCommand(*command);
}

}  // namespace cli
