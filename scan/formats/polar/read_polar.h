/* read_polar.h - polar data files as scans. */
#ifndef SCAN_FORMATS_POLAR_READ_POLAR_H
#define SCAN_FORMATS_POLAR_READ_POLAR_H

#include <string>

#include "scan/scan.h"

namespace scan {

/*
 * Reads a file without correcting or blanking anything. layout is 252, 260 or 280, or 0 where the
 * user did not say: that is good enough for products that were packed in one way only. Throws
 * std::runtime_error with the reason.
 */
Scan readPolarData(const std::string& path, int layout);

}  // namespace scan

#endif
