/* write_classes.h - sweeps and their classes as files, in the form that the file's ending asks for.
 */
#ifndef SCAN_FORMATS_WRITE_CLASSES_H
#define SCAN_FORMATS_WRITE_CLASSES_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"

class Cufrw;

namespace scan {

/*
 * .uf: Universal Format, one file: the whole scan, with a class field beside the others;
 * .h5, .nc, .nc4: ODIM_H5, CfRadial 1 and 2, one file, see writeContainer();
 * .csv: comma-separated table of the classes, one file a sweep;
 * anything else: field record file of the classes, one a sweep.
 * With several sweeps "_sweepN" goes before the ending of files that hold one.
 *
 * words are those of a Universal Format input (else null); they receive the class field. All files
 * are complete before the first takes its name. Throws std::runtime_error.
 */
WrittenFiles writeClasses(const std::string& path, const Scan& scan, Cufrw* words,
                          const std::vector<SweepClasses>& classes, const ClassForm& form = {});

/* The same for a scan that was cleaned, with all its fields: no table, and field record files hold
 * the fields, then the classes. */
WrittenFiles writeCleaned(const std::string& path, const Scan& scan, Cufrw* words,
                          const std::vector<SweepClasses>& classes, const ClassForm& form);

/*
 * The sweeps of a scan with all their fields, by the same rules: .uf, .h5 and .nc one file, .csv
 * the table of the class field, anything else a field record file of all fields, one a sweep. A
 * class field is one that isClassField() knows. Throws std::runtime_error, also for a table of a
 * sweep without classes.
 */
WrittenFiles writeScan(const std::string& path, const Scan& scan);

/* The ending of the format that a file is best written as: its own, where there is a writer for it.
 * Throws std::runtime_error if the file cannot be opened. */
std::string usualEnding(const std::string& path);

/* "out.csv" to "out_sweep2.csv", where a scan has several sweeps: one name for each of the given.
 */
std::vector<std::string> sweepPaths(const std::string& path, const Scan& scan,
                                    const std::vector<const Sweep*>& sweeps);

}  // namespace scan

#endif
