/* demo.h - the command `demo`: classify a synthetic scan and compare with its known truth. */
#ifndef CLI_COMMANDS_DEMO_H
#define CLI_COMMANDS_DEMO_H

namespace CLI {
class App;
}

namespace cli {

void addDemoCommand(CLI::App& app);

}  // namespace cli

#endif
