/* write_containers.h - scans and classes as ODIM_H5 or CfRadial files, chosen by the ending. */
#ifndef SCAN_FORMATS_CONTAINERS_WRITE_CONTAINERS_H
#define SCAN_FORMATS_CONTAINERS_WRITE_CONTAINERS_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"

namespace scan {

/* ".h5", ".hdf" and ".hdf5": ODIM_H5; ".nc": CfRadial 1; ".nc4": CfRadial 2. In lower case. */
bool isContainerEnding(const std::string& ending);

/*
 * One file for the whole scan. Where the scan was read from a file of the same format, and there
 * are classes, that file is copied, the classes are added to it, and the fields that were cleaned
 * are changed: all else stays as it is. Throws std::runtime_error.
 */
WrittenFiles writeContainer(const std::string& path, const Scan& scan,
                            const std::vector<SweepClasses>& classes, const ClassForm& form = {});

}  // namespace scan

#endif
