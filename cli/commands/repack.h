/* repack.h - the command `repack`: polar data files with shorter rays. */
#ifndef CLI_COMMANDS_REPACK_H
#define CLI_COMMANDS_REPACK_H

namespace CLI {
class App;
}

namespace cli {

void addRepackCommand(CLI::App& app);

}  // namespace cli

#endif
