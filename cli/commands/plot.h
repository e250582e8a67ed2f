/* plot.h - the command `plot`: one field of a scan as a picture. */
#ifndef CLI_COMMANDS_PLOT_H
#define CLI_COMMANDS_PLOT_H

namespace CLI {
class App;
}

namespace cli {

void addPlotCommand(CLI::App& app);

}  // namespace cli

#endif
