/* progress.h - one line on a terminal's standard error while long work goes on, nothing elsewhere.
 */
#ifndef CLI_REPORT_PROGRESS_H
#define CLI_REPORT_PROGRESS_H

#include <string>

namespace cli {

class Progress {
  public:
    /* wanted false keeps it silent on a terminal too. */
    explicit Progress(bool wanted);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /* Step done of total is about to begin. */
    void show(int done, int total, const std::string& what);

    /* Takes the line away, so that other output may follow. */
    void clear();

    /* Takes the line away at the end of its scope, also when an error ends it. */
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
    bool active_;
    bool shown_ = false;
};

}  // namespace cli

#endif
