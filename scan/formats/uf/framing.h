/* framing.h - how the records of a Universal Format file follow each other. */
#ifndef SCAN_FORMATS_UF_FRAMING_H
#define SCAN_FORMATS_UF_FRAMING_H

#include <string>

#include "scan/scan.h"

namespace scan {

/* Adds what the library's own reader does not report: a year of two digits, bytes after the last
 * whole record, an end within the last record. Only the lengths of the records are read. */
void addFramingNotes(const std::string& path, Scan& scan);

}  // namespace scan

#endif
