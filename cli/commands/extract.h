/* extract.h - the command `extract`: values of fields at the points of a list. */
#ifndef CLI_COMMANDS_EXTRACT_H
#define CLI_COMMANDS_EXTRACT_H

namespace CLI {
class App;
}

namespace cli {

void addExtractCommand(CLI::App& app);

}  // namespace cli

#endif
