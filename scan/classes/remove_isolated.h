/* remove_isolated.h - single precipitation gates among others become clutter. */
#ifndef SCAN_CLASSES_REMOVE_ISOLATED_H
#define SCAN_CLASSES_REMOVE_ISOLATED_H

#include <vector>

#include "scan/scan.h"

namespace scan {

/* Changes classes, nrays x ngates, as the library's stage does. */
void removeIsolated(const Sweep& sweep, std::vector<float>& classes);

}  // namespace scan

#endif
