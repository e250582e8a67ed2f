/* export.h - the command `export`: one field as a table, an ASCII grid or raw numbers. */
#ifndef CLI_COMMANDS_EXPORT_H
#define CLI_COMMANDS_EXPORT_H

namespace CLI {
class App;
}

namespace cli {

void addExportCommand(CLI::App& app);

}  // namespace cli

#endif
