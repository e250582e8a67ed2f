/* write_cfradial.h - scans as CfRadial files, and classes beside what such a file holds already. */
#ifndef SCAN_FORMATS_CFRADIAL_WRITE_CFRADIAL_H
#define SCAN_FORMATS_CFRADIAL_WRITE_CFRADIAL_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"
#include "scan/scan.h"

namespace scan::cfradial {

/*
 * Release 1: all rays stacked; where their gates differ, the values of all gates are stacked too.
 * Release 2: a group a sweep. Fields are floats with _FillValue and _Undetect, classes bytes with
 * flag_values and flag_meanings. Returns sentences about what the format cannot hold. Throws
 * std::runtime_error.
 */
std::vector<std::string> writeCfRadial1(const std::string& path, const Scan& scan,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form);
std::vector<std::string> writeCfRadial2(const std::string& path, const Scan& scan,
                                        const std::vector<SweepClasses>& classes,
                                        const ClassForm& form);

/* Adds a variable of classes to an existing file of either release and cleans its fields; all else
 * in it stays as it is. Sweeps are those that readCfRadial() made of the file. */
std::vector<std::string> addCfRadialClasses(const std::string& path,
                                            const std::vector<SweepClasses>& classes,
                                            const ClassForm& form);

}  // namespace scan::cfradial

#endif
