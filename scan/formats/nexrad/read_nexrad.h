/* read_nexrad.h - NEXRAD Level 2 volumes into a Scan. */
#ifndef SCAN_FORMATS_NEXRAD_READ_NEXRAD_H
#define SCAN_FORMATS_NEXRAD_READ_NEXRAD_H

#include <string>

#include "scan/scan.h"

namespace scan {

/* One sweep an elevation of the volume's plan, numbered as there: of a split cut the long-range
 * part and the Doppler part are two. Throws std::runtime_error with the reason. */
Scan readNexrad(const std::string& path);

}  // namespace scan

#endif
