/* commands.h - the command line of the program: each command is added by one function. */
#ifndef CLI_COMMANDS_COMMANDS_H
#define CLI_COMMANDS_COMMANDS_H

namespace CLI {
class App;
}

namespace cli {

/* Description, examples and all commands, in their order. */
void addProgram(CLI::App& app);

void addClassifyCommand(CLI::App& app);
void addCleanCommand(CLI::App& app);
void addConvertCommand(CLI::App& app);
void addDemoCommand(CLI::App& app);
void addExplainCommand(CLI::App& app);
void addExportCommand(CLI::App& app);
void addExtractCommand(CLI::App& app);
void addInfoCommand(CLI::App& app);
void addMembershipCommand(CLI::App& app);
void addPlotCommand(CLI::App& app);
void addProcessCommand(CLI::App& app);
void addRepackCommand(CLI::App& app);
void addViewCommand(CLI::App& app);
void addWatchCommand(CLI::App& app);

}  // namespace cli

#endif
