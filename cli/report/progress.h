/* progress.h - a line on the terminal while long work goes on; nothing where there is no terminal.
 */
#ifndef CLI_REPORT_PROGRESS_H
#define CLI_REPORT_PROGRESS_H

#include <chrono>
#include <string>

namespace cli {

class Progress {
  public:
    /* Without wanted it is silent on a terminal too. */
    explicit Progress(bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /* Step number done of total begins. */
    void show(int done, int total, const std::string& what);

    /* Removes the line, so that other output can follow. */
    void clear();

    /* Removes the line at the end of its scope, also when an exception ends it. */
    class ClearAtEnd {
      public:
        explicit ClearAtEnd(Progress& progress) : progress_(progress) {}
        ~ClearAtEnd() { progress_.clear(); }
        ClearAtEnd(const ClearAtEnd&) = delete;
        ClearAtEnd& operator=(const ClearAtEnd&) = delete;

      private:
        Progress& progress_;
    };

  private:
    [[nodiscard]] std::string pace(int done, int total) const;

    bool active_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    bool shown_ = false;
};

}  // namespace cli

#endif
