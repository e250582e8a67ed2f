/* info.h - the command `info`: what a file holds. */
#ifndef CLI_COMMANDS_INFO_H
#define CLI_COMMANDS_INFO_H

namespace CLI {
class App;
}

namespace cli {

void addInfoCommand(CLI::App& app);

}  // namespace cli

#endif
