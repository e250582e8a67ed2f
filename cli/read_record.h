/* read_record.h - a field record file into a Scan: its records are the fields of one sweep. */
#ifndef CLI_READ_RECORD_H
#define CLI_READ_RECORD_H

#include <string>

#include "scan.h"

class Cpluvek;

namespace cli {

/* Throws std::runtime_error with the reason. */
Scan readFieldRecord(const std::string& path);

/* The one sweep that an array of polar records holds. */
Scan scanFromRecords(const Cpluvek* records, int count);

}  // namespace cli

#endif
