/* read_cfradial.h - CfRadial files, releases 1 and 2, into a Scan. */
#ifndef SCAN_FORMATS_CFRADIAL_READ_CFRADIAL_H
#define SCAN_FORMATS_CFRADIAL_READ_CFRADIAL_H

#include "scan/formats/netcdf/nc_group.h"
#include "scan/scan.h"

namespace scan::cfradial {

/* Whether a file is of release 2. */
bool hasSweepGroups(const netcdf::Group& file);

/* Rays stacked in one file (release 1), or a group a sweep (release 2, also WMO FM 301). Throws
 * std::runtime_error with the variable that is wrong. */
Scan readCfRadial(const netcdf::Group& file, ValueBudget& budget);

}  // namespace scan::cfradial

#endif
