/* summary.h - what `classify` prints about its results. */
#ifndef CLI_REPORT_SUMMARY_H
#define CLI_REPORT_SUMMARY_H

#include "scan/classes/classify_sweep.h"
#include "scan/scan.h"

namespace cli {

/* Sums over sweeps and files. */
struct Totals {
    long precipitation = 0, groundClutter = 0, noise = 0;
    long seaClutter = 0, turbineClutter = 0;
    double seconds = 0;
    int sweeps = 0, files = 0;
    void add(const scan::ClassifiedSweep& result);
    void add(const Totals& other);
};

/* One line for a file, before its sweeps. */
void printScanLine(const scan::Scan& scan);

void printSweep(const scan::Sweep& sweep, const scan::ClassifiedSweep& result);

/* What makes a result doubtful, then what else is worth knowing. */
void printRemarks(const scan::ClassificationPlan& plan);

/* Prints nothing for a single sweep, whose own lines say it all. */
void printTotals(const Totals& totals);

}  // namespace cli

#endif
