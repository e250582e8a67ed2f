/* class_output.h - the classes of a scan as files, in the form that the file's ending asks for. */
#ifndef CLI_OUTPUT_CLASS_OUTPUT_H
#define CLI_OUTPUT_CLASS_OUTPUT_H

#include <string>
#include <vector>

#include "scan/scan.h"

class Cufrw;

namespace cli {

/* The classes of one sweep of a scan. */
struct SweepClasses {
    const scan::Sweep* sweep;
    const std::vector<float>* classes; /* NaN where the ray has no such gate */
};

/*
 * .uf: Universal Format, the whole scan with a class field beside the others;
 * .csv: comma-separated table, one file a sweep; anything else: field record file, one a sweep.
 * With several sweeps "_sweepN" goes before the ending of those that hold one.
 *
 * words are those of a Universal Format input (else null); they receive the class field. All files
 * are complete before the first takes its name. Returns their names; throws std::runtime_error.
 */
std::vector<std::string> writeClasses(const std::string& path, const scan::Scan& scan, Cufrw* words,
                                      const std::vector<SweepClasses>& classes);

/* "out.csv" to "out_sweep2.csv", where a scan has several sweeps: one name for each of the given.
 */
std::vector<std::string> sweepPaths(const std::string& path, const scan::Scan& scan,
                                    const std::vector<SweepClasses>& classes);

}  // namespace cli

#endif
