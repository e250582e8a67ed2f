/* write_odim.h - scans as ODIM_H5 files, and classes beside what such a file holds already. */
#ifndef SCAN_FORMATS_ODIM_WRITE_ODIM_H
#define SCAN_FORMATS_ODIM_WRITE_ODIM_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"
#include "scan/scan.h"

namespace scan::odim {

/*
 * Release 2.2, one dataset a sweep, values as floats. Rays of a full circle begin with the one
 * nearest to north, as the format wants it. Classes, where a sweep has some, are a quality group.
 * Returns sentences about what the format cannot hold. Throws std::runtime_error.
 */
std::vector<std::string> writeOdim(const std::string& path, const Scan& scan,
                                   const std::vector<SweepClasses>& classes, const ClassForm& form);

/* Adds a quality group to the datasets of an existing file and cleans its data; all else in it
 * stays as it is. Sweeps are those that readOdim() made of the file. */
std::vector<std::string> addOdimClasses(const std::string& path,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form);

}  // namespace scan::odim

#endif
