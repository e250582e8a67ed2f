/*
 * record.h - what `watch` has done, kept in the output folder: the outputs themselves, a table of
 * failures, and a file of figures for a monitoring system.
 */
#ifndef CLI_COMMANDS_WATCH_RECORD_H
#define CLI_COMMANDS_WATCH_RECORD_H

#include <cstdint>
#include <map>
#include <string>

namespace cli {

/* A file as it was when it was worked on: another size or time means another content. */
struct Version {
    std::int64_t bytes = -1, timeNs = 0;
    bool operator==(const Version&) const = default;
};

/* bytes is -1 where there is no such file. */
Version versionOf(const std::string& path);

struct Figures {
    long files = 0, failures = 0;
    std::int64_t bytes = 0;
    double lastDataS = 0;  // since 1970; 0: none yet
    double latencyS = 0;   // of the last file
};

class Record {
  public:
    /* Waits until no other watch uses the folder, and removes what a killed one left unfinished.
     * Throws std::system_error. */
    explicit Record(std::string folder);
    ~Record();
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    /* Whether nothing is left to do for this version of an input. */
    [[nodiscard]] bool isDone(const std::string& name, const Version& input,
                              const std::string& output) const;

    void addDone(const std::string& name, const Version& input, double latencyS);
    /* Into failures.csv, which keeps what has been set down. */
    void addFailure(const std::string& name, const Version& input, const std::string& reason);

    /* Rewrites status.prom. A full disk keeps the old one. */
    void writeStatus() const;
    [[nodiscard]] const Figures& figures() const { return figures_; }

  private:
    void removeUnfinished() const;
    void readFailures();

    std::string folder_;
    int lock_;
    std::map<std::string, Version> failed_, done_;
    Figures figures_;
};

}  // namespace cli

#endif
