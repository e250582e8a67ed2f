/* run.h - the work of `classify` and `clean`, file by file. */
#ifndef CLI_COMMANDS_CLASSIFY_RUN_H
#define CLI_COMMANDS_CLASSIFY_RUN_H

#include <cstddef>
#include <vector>

#include "commands/classify/call.h"
#include "commands/classify/jobs.h"
#include "report/progress.h"
#include "report/summary.h"
#include "scan/formats/writing/sweep_classes.h"

namespace cli {

class ClassifyRun {
  public:
    /* Throws CLI::ValidationError when the call makes no sense. */
    explicit ClassifyRun(const ClassifyCall& call);

    /* Whether all files were classified and written. A file that fails is reported, and does not
     * keep the others from being worked on. */
    bool perform();

  private:
    /* A scan and its classes; what was read of a Universal Format file is kept for writing. */
    struct Work;

    bool tryFile(const Job& job);
    bool performInTurn();
    bool performTogether();
    void showProgress(std::size_t done);
    void classifyFile(const Job& job);
    void report(const Work& work);
    [[nodiscard]] scan::WrittenFiles write(const Job& job, Work& work) const;
    void printDocument(const Work& work, const scan::WrittenFiles& written) const;
    [[nodiscard]] bool talks() const { return !call_.quiet && !call_.json; }
    [[nodiscard]] std::vector<scan::SweepClasses> classesOf(Work& work) const;
    [[nodiscard]] scan::WrittenFiles clean(const Job& job, Work& work) const;
    static std::vector<scan::Field> reflectivities(const Work& work);
    void drawCleaned(const Job& job, const Work& work,
                     const std::vector<scan::Field>& before) const;
    void draw(const Job& job, const Work& work) const;

    const ClassifyCall& call_;
    scan::ClassifyOptions options_;
    scan::ClassForm form_;
    std::vector<InputFile> inputs_;
    std::vector<Job> jobs_;
    Progress progress_;
    Totals totals_;
};

}  // namespace cli

#endif
