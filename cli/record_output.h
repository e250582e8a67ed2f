/* record_output.h - sweeps as field records, and the classes as field record file or table. */
#ifndef CLI_RECORD_OUTPUT_H
#define CLI_RECORD_OUTPUT_H

#include <string>
#include <vector>

#include "class_output.h"

class Cpluvek;

namespace cli {

/* Fills a record that is new with one quantity of a sweep. NaN values stay NaN. */
void fillFieldRecord(const scan::Scan& scan, const scan::Sweep& sweep, const std::string& name,
                     const std::string& units, const std::vector<float>& values, Cpluvek& record);

/* Says on standard output that a kind of file, "a field record file", keeps one elevation only. */
void noteLostElevations(const char* kind);

/* A field record file of one record, "CCl", one byte a gate. */
void writeFieldRecord(const std::string& path, const scan::Scan& scan, const SweepClasses& classes);

/*
 * One line a gate and one column a ray: "range/angle," and the azimuths (of a range-height
 * scan: elevations) in degrees, then the range in km and the values. Ranges count from the first
 * gate, as the library does.
 */
void writeTable(const std::string& path, const SweepClasses& classes);

}  // namespace cli

#endif
