/* read_record.h - a field record file into a Scan: its records are the fields of one sweep. */
#ifndef SCAN_FORMATS_RECORD_READ_RECORD_H
#define SCAN_FORMATS_RECORD_READ_RECORD_H

#include <memory>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/scan.h"

class Cpluvek;

namespace scan {

/* The records of a file as the library holds them: all with the sizes of the first. */
struct RecordArray {
    std::unique_ptr<Cpluvek[]> records;
    int count = 0;

    [[nodiscard]] bool isGrid() const { return records[0].coordtype == 2; }
    [[nodiscard]] std::vector<std::string> names() const;
};

/* Polar or Cartesian. Throws std::runtime_error with the reason. */
RecordArray loadRecords(const std::string& path);

/* Throws std::runtime_error with the reason: a Cartesian record is one. */
Scan readFieldRecord(const std::string& path);

/* The one sweep that an array of polar records holds. */
Scan scanFromRecords(const Cpluvek* records, int count);

}  // namespace scan

#endif
