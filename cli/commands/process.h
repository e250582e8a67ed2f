/* process.h - the command `process`. */
#ifndef CLI_COMMANDS_PROCESS_H
#define CLI_COMMANDS_PROCESS_H

namespace CLI {
class App;
}

namespace cli {

void addProcessCommand(CLI::App& app);

}  // namespace cli

#endif
