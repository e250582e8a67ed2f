/* classic_size.h - whether a NetCDF file of the classic model is as long as its header says. */
#ifndef SCAN_FORMATS_NETCDF_CLASSIC_SIZE_H
#define SCAN_FORMATS_NETCDF_CLASSIC_SIZE_H

#include <string>

namespace scan::netcdf {

/* Or its header is damaged. The library reads zeros past the end of such a file, and asks for the
 * memory that a header declares. False for files of other models. */
bool isCutShort(const std::string& path);

}  // namespace scan::netcdf

#endif
