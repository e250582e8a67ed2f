/* sweep_classes.h - the classes of a sweep on their way to a file, and what became of them. */
#ifndef SCAN_FORMATS_WRITING_SWEEP_CLASSES_H
#define SCAN_FORMATS_WRITING_SWEEP_CLASSES_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/scan.h"

namespace scan {

/* Fields of a sweep whose values of clutter and noise were taken away. */
struct CleanedFields {
    std::vector<std::string> fields = {};  // names
    std::vector<std::uint8_t> gates = {};  // of the sweep: 1 where a value became no echo
};

/* The classes of one sweep of a scan. */
struct SweepClasses {
    const Sweep* sweep;
    const std::vector<float>* classes;  // NaN where the ray has no such gate
    std::vector<Field> certainty = {};  // fields to be written beside the classes
    CleanedFields cleaned = {};         // also where the input is copied
};

/* How classes are written into files that say what their codes mean. */
struct ClassForm {
    bool serviceCodes = false;  // the codes that weather services share, in place of the library's
    bool asQuantity = false;    // ODIM_H5: also as a quantity among the data
    std::string history = {};   // a line for the history of a file that is copied
};

/* Files that were written, and what their format could not hold. */
struct WrittenFiles {
    std::vector<std::string> paths;
    std::vector<std::string> notes;
};

}  // namespace scan

#endif
