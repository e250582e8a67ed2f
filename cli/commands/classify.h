/* classify.h - the command `classify`: classes for every sweep of files. */
#ifndef CLI_COMMANDS_CLASSIFY_H
#define CLI_COMMANDS_CLASSIFY_H

namespace CLI {
class App;
}

namespace cli {

void addClassifyCommand(CLI::App& app);

}  // namespace cli

#endif
