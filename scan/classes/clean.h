/* clean.h - fields of a sweep without the values of clutter and noise. */
#ifndef SCAN_CLASSES_CLEAN_H
#define SCAN_CLASSES_CLEAN_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"
#include "scan/scan.h"

namespace scan {

struct CleanOptions {
    std::vector<float> kept;          // codes of the classes that stay
    std::vector<std::string> fields;  // names, in any case; empty: all that clutter spoils
};

/* "precipitation,noise": codes of classes by their names; "clutter" is all kinds of it. Throws
 * std::invalid_argument. */
std::vector<float> parseClasses(const std::string& names);

/* Whether echo of clutter makes a field of that name wrong. It does not where the field is about
 * the signal or the clutter itself: quality index, signal-to-noise ratio, correction, clutter mask.
 */
bool isSpoiledByClutter(const std::string& name);

/*
 * Gates of other classes than those that stay hold no echo afterwards, as after reading a format
 * that knows such gates: NaN, marked in noEchoGates. Gates without a value stay missing. classes
 * has a code or NaN for each gate. Returns what was done, for writers. Throws std::runtime_error if
 * no field of the sweep has one of the names.
 */
CleanedFields cleanSweep(Sweep& sweep, const std::vector<float>& classes,
                         const CleanOptions& options);

/* One line about it, for the history of a file. */
std::string historyOfCleaning(const CleanOptions& options);

}  // namespace scan

#endif
