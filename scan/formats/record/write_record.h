/* write_record.h - sweeps as field records, and as field record files and tables. */
#ifndef SCAN_FORMATS_RECORD_WRITE_RECORD_H
#define SCAN_FORMATS_RECORD_WRITE_RECORD_H

#include <string>
#include <vector>

#include "scan/formats/writing/output_file.h"
#include "scan/formats/writing/sweep_classes.h"

class Cpluvek;

namespace scan {

/* Fills a record that is new with one quantity of a sweep. NaN values stay NaN. */
void fillFieldRecord(const Scan& scan, const Sweep& sweep, const std::string& name,
                     const std::string& units, const std::vector<float>& values, Cpluvek& record);

/* "<kind> cannot hold the elevations ...": a note about a kind of file that keeps one elevation. */
std::string lostElevationsNote(const char* kind);

/* Which names are shorter there than in the scan; "" where none is. */
std::string shortNamesNote(const std::vector<Field>& fields);

/* A field record file with one record a field. */
void writeRecords(const OutputFile& file, const Scan& scan, const Sweep& sweep,
                  const std::vector<Field>& fields);

/* A field record file of one record, "CCl", one byte a gate; with certainty one more record a
 * field.
 */
void writeClassRecord(const OutputFile& file, const Scan& scan, const SweepClasses& classes);

/* Puts the elevations in place of the azimuths: the columns of a range-height scan's table. */
void headByElevation(const Sweep& sweep, Cpluvek& record);

/* The table of a polar record, of the classes of a sweep: one line a gate and one column a ray. */
void writeTable(const OutputFile& file, Cpluvek& record);
void writeClassTable(const OutputFile& file, const Scan& scan, const SweepClasses& classes);

}  // namespace scan

#endif
