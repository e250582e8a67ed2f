/* read_dx.h - German DX files as scans. */
#ifndef SCAN_FORMATS_DX_READ_DX_H
#define SCAN_FORMATS_DX_READ_DX_H

#include <string>

#include "scan/scan.h"

namespace scan {

/* One field, "Z"; bins without an echo have no value, unless they shall keep theirs. Throws
 * std::runtime_error with the reason. */
Scan readGermanDx(const std::string& path, bool keepNoEcho);

}  // namespace scan

#endif
