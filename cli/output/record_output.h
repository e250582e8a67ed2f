/* record_output.h - sweeps as field records, and the classes as field record file or table. */
#ifndef CLI_OUTPUT_RECORD_OUTPUT_H
#define CLI_OUTPUT_RECORD_OUTPUT_H

#include <string>
#include <vector>

#include "output/class_output.h"

class Cpluvek;

namespace cli {

/* Fills a record that is new with one quantity of a sweep. NaN values stay NaN. */
void fillFieldRecord(const scan::Scan& scan, const scan::Sweep& sweep, const std::string& name,
                     const std::string& units, const std::vector<float>& values, Cpluvek& record);

/* Says on standard output that a kind of file, "a field record file", keeps one elevation only. */
void noteLostElevations(const char* kind);

/* A field record file of one record, "CCl", one byte a gate. */
void writeFieldRecord(const std::string& path, const scan::Scan& scan, const SweepClasses& classes);

/* Elevations in the place of the azimuths: the columns of a range-height scan's table. */
void headByElevation(const scan::Sweep& sweep, Cpluvek& record);

/* The table of a polar record, of the classes of a sweep: one line a gate and one column a ray. */
void writeTable(const std::string& path, Cpluvek& record);
void writeTable(const std::string& path, const scan::Scan& scan, const SweepClasses& classes);

}  // namespace cli

#endif
