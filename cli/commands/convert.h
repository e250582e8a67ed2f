/* convert.h - the command `convert`: a scan in another format. */
#ifndef CLI_COMMANDS_CONVERT_H
#define CLI_COMMANDS_CONVERT_H

namespace CLI {
class App;
}

namespace cli {

void addConvertCommand(CLI::App& app);

}  // namespace cli

#endif
