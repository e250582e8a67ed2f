/* run.h - the work of `process`: one file through the processing chain. */
#ifndef CLI_COMMANDS_PROCESS_RUN_H
#define CLI_COMMANDS_PROCESS_RUN_H

#include <string>
#include <vector>

#include "commands/process/call.h"
#include "report/progress.h"
#include "scan/points/samples.h"
#include "scan/process/process_sweep.h"

namespace cli {

class ProcessRun {
  public:
    /* Throws FileError or CLI::ValidationError for settings that cannot be used. */
    ProcessRun(const ProcessCall& call, const InputFile& input);

    /* Throws std::runtime_error with the reason when the file cannot be processed or written. */
    void perform();

  private:
    void readPointList();
    scan::ProcessedSweep process(const scan::Sweep& sweep);
    void report(const scan::Sweep& sweep, const scan::ProcessedSweep& processed) const;
    [[nodiscard]] std::vector<std::string> pathsFor(const std::string& path) const;
    void write();
    void draw(const scan::ProcessedSweep& processed, const std::string& path) const;
    void sample();
    void printDocument() const;
    [[nodiscard]] bool talks() const { return !call_.quiet && !call_.json; }

    const ProcessCall& call_;
    const InputFile& input_;
    scan::ProcessOptions options_;
    Progress progress_;
    scan::Points points_;
    scan::Scan scan_;
    std::vector<const scan::Sweep*> sweeps_;
    std::vector<scan::ProcessedSweep> processed_;
};

}  // namespace cli

#endif
