/* classic_size.h - whether a NetCDF file of the classic model is as long as its header says. */
#ifndef SCAN_FORMATS_NETCDF_CLASSIC_SIZE_H
#define SCAN_FORMATS_NETCDF_CLASSIC_SIZE_H

#include <string>

namespace scan::netcdf {

/* The library reads zeros past the end of such a file, and does not report it. False for files of
 * other models, and if the header itself is cut: the library reports that. */
bool isCutShort(const std::string& path);

}  // namespace scan::netcdf

#endif
