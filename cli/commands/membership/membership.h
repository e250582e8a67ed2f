/* membership.h - the parts of the command `membership`. */
#ifndef CLI_COMMANDS_MEMBERSHIP_MEMBERSHIP_H
#define CLI_COMMANDS_MEMBERSHIP_MEMBERSHIP_H

namespace CLI {
class App;
}

namespace cli {

void addCheckCommand(CLI::App& membership);
void addTrainCommand(CLI::App& membership);
void addSheetCommand(CLI::App& membership);

}  // namespace cli

#endif
