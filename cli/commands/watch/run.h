/* run.h - the work of `watch`: every file that arrives, one after another. */
#ifndef CLI_COMMANDS_WATCH_RUN_H
#define CLI_COMMANDS_WATCH_RUN_H

#include <string>

#include "commands/classify/call.h"
#include "commands/watch/arrivals.h"
#include "commands/watch/record.h"

namespace cli {

struct WatchCall {
    std::string folder;
    ClassifyCall classify;  // its output is the folder of the outputs
    bool clean = false, json = false;
};

class WatchRun {
  public:
    explicit WatchRun(const WatchCall& call);

    /* Until SIGTERM or SIGINT, which let the current file come to its end. */
    void perform();

  private:
    void handle(const Arrival& arrival);
    [[nodiscard]] std::string outputFor(const std::string& name) const;
    [[nodiscard]] std::string tryFile(const std::string& input, const std::string& output) const;
    [[nodiscard]] bool isDiskFull(const Version& input) const;
    void reportDone(const std::string& name, const std::string& output, double latencyS) const;
    void reportFailure(const std::string& name, const std::string& reason) const;

    const WatchCall& call_;
    Record record_;
};

}  // namespace cli

#endif
