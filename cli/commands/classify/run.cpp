/* run.cpp - reads, classifies, reports and writes the files of one call of `classify`. */
#include "commands/classify/run.h"

#include <cstddef>
#include <memory>
#include <string>

#include "clutterclassifier/clutterclassifier.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/selection.h"
#include "picture/picture.h"
#include "report/failure.h"
#include "report/notes.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/history.h"

namespace cli {

struct ClassifyRun::Work {
    std::unique_ptr<Cufrw> words;
    scan::Scan scan;
    std::vector<const scan::Sweep*> sweeps;
    std::vector<scan::ClassifiedSweep> results;
};

namespace {

scan::ClassifyOptions optionsOf(const ClassifyCall& call) {
    scan::ClassifyOptions options = classifyOptionsFrom(call.how);
    options.removeIsolated = call.removeIsolated;
    options.certainty = call.certainty;
    options.allClasses = call.classes == "all";
    return options;
}

}  // namespace

ClassifyRun::ClassifyRun(const ClassifyCall& call)
    : call_(call),
      options_(optionsOf(call)),
      form_{call.codes == "services", call.classQuantity, ""},
      inputs_(call.inputs.begin(), call.inputs.end()),
      jobs_(planJobs(call, inputs_)),
      progress_(!call.quiet) {
    requireLayoutUsed(call.read, inputs_);
}

bool ClassifyRun::perform() {
    makeDirectories(call_);
    options_.membership = membershipDirectory(call_.how.membership);
    bool good = true;
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
        const std::string& name = jobs_[i].input->name();
        progress_.show(static_cast<int>(i), static_cast<int>(jobs_.size()), name);
        good &= attempt(name, [&] {
            const Progress::ClearAtEnd clear(progress_);
            classifyFile(jobs_[i]);
        });
    }
    if (!call_.quiet) {
        printTotals(totals_);
    }
    return good;
}

void ClassifyRun::classifyFile(const Job& job) {
    Work work;
    work.scan = readInput(*job.input, work.words, call_.read);
    work.sweeps = findSweeps(work.scan, call_.sweep);
    scan::NoiseEstimates estimates(work.scan, options_.map);
    scan::ClassifyOptions options = options_;
    options.estimates = &estimates;
    for (const scan::Sweep* sweep : work.sweeps) {
        const std::size_t done = work.results.size();
        if (jobs_.size() < 2) {
            progress_.show(static_cast<int>(done), static_cast<int>(work.sweeps.size()),
                           job.input->name() + " sweep " + std::to_string(done + 1));
        }
        work.results.push_back(classifySweep(work.scan, *sweep, options));
    }
    progress_.clear();
    report(work);
    write(job, work);
    ++totals_.files;
}

void ClassifyRun::report(const Work& work) {
    for (const scan::ClassifiedSweep& result : work.results) {
        totals_.add(result);
    }
    if (call_.quiet) {
        return noteDamage(work.scan, Beside::kErrors);
    }
    printScanLine(work.scan);
    noteDamage(work.scan, Beside::kResults);
    for (std::size_t s = 0; s < work.sweeps.size(); ++s) {
        printSweep(*work.sweeps[s], work.results[s]);
    }
}

std::vector<scan::SweepClasses> ClassifyRun::classesOf(Work& work) const {
    std::vector<scan::SweepClasses> classes;
    for (std::size_t s = 0; s < work.sweeps.size(); ++s) {
        const scan::ClassifiedSweep& result = work.results[s];
        classes.push_back({work.sweeps[s], &result.classes, certaintyFields(result)});
    }
    return classes;
}

/* The scan's own sweeps are cleaned: what was classified is no longer needed. */
scan::WrittenFiles ClassifyRun::clean(const Job& job, Work& work) const {
    std::vector<scan::SweepClasses> classes = classesOf(work);
    for (std::size_t s = 0; s < classes.size(); ++s) {
        classes[s].cleaned = cleanSweep(work.scan.sweeps[s], *classes[s].classes, *call_.clean);
    }
    scan::ClassForm form = form_;
    form.history = historyOfCleaning(*call_.clean);
    work.scan.history = scan::extendedHistory(work.scan.history, form.history);
    return writeCleaned(job.output, work.scan, work.words.get(), classes, form);
}

void ClassifyRun::write(const Job& job, Work& work) const {
    std::vector<scan::Field> before;
    if (!job.plot.empty() && call_.clean) {
        before = reflectivities(work);
    } else if (!job.plot.empty()) {
        draw(job, work);
    }
    if (job.output.empty()) {
        return;
    }
    const scan::WrittenFiles written =
        call_.clean ? clean(job, work)
                    : writeClasses(job.output, work.scan, work.words.get(), classesOf(work), form_);
    if (!before.empty()) {
        drawCleaned(job, work, before);
    }
    if (call_.quiet) {
        return;
    }
    printNotes(written.notes);
    announce(written.paths);
}

/* As they were read; a copy, since cleaning changes them. */
std::vector<scan::Field> ClassifyRun::reflectivities(const Work& work) {
    std::vector<scan::Field> fields;
    for (const scan::ClassifiedSweep& result : work.results) {
        fields.push_back(*result.fields[scan::Role::kZhh]);
    }
    return fields;
}

void ClassifyRun::drawCleaned(const Job& job, const Work& work,
                              const std::vector<scan::Field>& before) const {
    const std::vector<std::string> paths = scan::sweepPaths(job.plot, work.scan, work.sweeps);
    for (std::size_t s = 0; s < paths.size(); ++s) {
        const scan::Field& after = *work.results[s].fields[scan::Role::kZhh];
        drawPanels(work.scan, *work.sweeps[s], {before[s], after},
                   {.headings = {before[s].name + " as measured", after.name + " cleaned"}},
                   paths[s]);
    }
    if (!call_.quiet) {
        announce(paths);
    }
}

void ClassifyRun::draw(const Job& job, const Work& work) const {
    const std::vector<std::string> paths = scan::sweepPaths(job.plot, work.scan, work.sweeps);
    for (std::size_t s = 0; s < paths.size(); ++s) {
        const scan::ClassifiedSweep& result = work.results[s];
        drawClasses(work.scan, *work.sweeps[s], *result.fields[scan::Role::kZhh], result.classes,
                    {}, paths[s]);
    }
    if (!call_.quiet) {
        announce(paths);
    }
}

}  // namespace cli
