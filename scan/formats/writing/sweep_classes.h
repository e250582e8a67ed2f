/* sweep_classes.h - the classes of a sweep on their way to a file, and what became of them. */
#ifndef SCAN_FORMATS_WRITING_SWEEP_CLASSES_H
#define SCAN_FORMATS_WRITING_SWEEP_CLASSES_H

#include <string>
#include <vector>

#include "scan/scan.h"

namespace scan {

/* The classes of one sweep of a scan. */
struct SweepClasses {
    const Sweep* sweep;
    const std::vector<float>* classes;  // NaN where the ray has no such gate
    std::vector<Field> certainty = {};  // fields to be written beside the classes
};

/* Files that were written, and what their format could not hold. */
struct WrittenFiles {
    std::vector<std::string> paths;
    std::vector<std::string> notes;
};

}  // namespace scan

#endif
