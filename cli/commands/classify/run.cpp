/* run.cpp - reads, classifies, reports and writes the files of one call of `classify`. */
#include "commands/classify/run.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include "clutterclassifier/clutterclassifier.h"
#include "options/input_list.h"
#include "options/layout_option.h"
#include "options/membership_dir.h"
#include "options/selection.h"
#include "picture/picture.h"
#include "report/documents.h"
#include "report/failure.h"
#include "report/in_order.h"
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
      inputs_(inputFiles(call.inputs)),
      jobs_(planJobs(call, inputs_)),
      progress_(!call.quiet) {
    requireLayoutUsed(call.read, inputs_);
}

bool ClassifyRun::perform() {
    makeDirectories(call_);
    options_.membership = membershipDirectory(call_.how.membership);
    const bool good = call_.jobs > 1 && jobs_.size() > 1 ? performTogether() : performInTurn();
    if (talks()) {
        printTotals(totals_);
    }
    return good;
}

bool ClassifyRun::performInTurn() {
    bool good = true;
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
        showProgress(i);
        good &= tryFile(jobs_[i]);
    }
    return good;
}

/* In workers, whose results are their totals, and whether the file was written. */
bool ClassifyRun::performTogether() {
    bool good = true;
    const auto work = [&](std::size_t i) -> std::string {
        totals_ = {};
        const bool done = tryFile(jobs_[i]);
        const auto* bytes = reinterpret_cast<const char*>(&totals_);
        return std::string(bytes, sizeof totals_) + (done ? "1" : "0");
    };
    const auto finish = [&](std::size_t i, const Finished& finished) {
        progress_.clear();
        printAll(finished);
        if (!finished.failure.empty()) {
            reportError(jobs_[i].input->name(), finished.failure);
        }
        good &= !finished.result.empty() && finished.result.back() == '1';
        if (!finished.result.empty()) {
            Totals totals;
            std::memcpy(&totals, finished.result.data(), sizeof totals);
            totals_.add(totals);
        }
        showProgress(i + 1);
    };
    showProgress(0);
    runInOrder(jobs_.size(), call_.jobs, work, finish);
    progress_.clear();
    return good;
}

bool ClassifyRun::tryFile(const Job& job) {
    const std::string& name = job.input->name();
    return attempt(name, [&] {
        const Progress::ClearAtEnd clear(progress_);
        documented(call_.json, name, [&] { classifyFile(job); });
    });
}

void ClassifyRun::showProgress(std::size_t done) {
    const std::size_t next = std::min(done, jobs_.size() - 1);
    progress_.show(static_cast<int>(done), static_cast<int>(jobs_.size()),
                   jobs_[next].input->name());
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
    const scan::WrittenFiles written = write(job, work);
    if (call_.json) {
        printDocument(work, written);
    }
    ++totals_.files;
}

void ClassifyRun::report(const Work& work) {
    for (const scan::ClassifiedSweep& result : work.results) {
        totals_.add(result);
    }
    if (!talks()) {
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

scan::WrittenFiles ClassifyRun::write(const Job& job, Work& work) const {
    std::vector<scan::Field> before;
    if (!job.plot.empty() && call_.clean) {
        before = reflectivities(work);
    } else if (!job.plot.empty()) {
        draw(job, work);
    }
    if (job.output.empty()) {
        return {};
    }
    const scan::WrittenFiles written =
        call_.clean ? clean(job, work)
                    : writeClasses(job.output, work.scan, work.words.get(), classesOf(work), form_);
    if (!before.empty()) {
        drawCleaned(job, work, before);
    }
    if (talks()) {
        printNotes(written.notes);
        announce(written.paths);
    }
    return written;
}

void ClassifyRun::printDocument(const Work& work, const scan::WrittenFiles& written) const {
    JsonObject object = scanObject(work.scan);
    std::vector<JsonObject> sweeps;
    for (std::size_t s = 0; s < work.sweeps.size(); ++s) {
        sweeps.push_back(classifiedObject(*work.sweeps[s], work.results[s]));
    }
    object.add("sweeps", sweeps);
    object.addList("outputs", written.paths);
    object.addList("notes", written.notes);
    object.print();
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
    if (talks()) {
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
    if (talks()) {
        announce(paths);
    }
}

}  // namespace cli
