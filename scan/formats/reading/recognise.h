/* recognise.h - the format of a file by its first bytes, whatever its name. */
#ifndef SCAN_FORMATS_READING_RECOGNISE_H
#define SCAN_FORMATS_READING_RECOGNISE_H

#include <string>

namespace scan {

enum class FileFormat {
    kUnknown,
    kUniversalFormat,
    kFieldRecord,
    kPolarData,
    kGermanDx,
    kNexrad,
    kNetcdf,      // CfRadial in a file of the classic model
    kHdf5,        // ODIM_H5, or CfRadial in a NetCDF-4 file
    kCompressed,  // by gzip or bzip2
    kForeign,     // known, but not read
};

/* After the name of a format that is not read. */
constexpr char kConvert[] =
    " file, which is not read: convert it to ODIM_H5 or CfRadial first, for instance with "
    "RadxConvert or xradar";

/* Throws std::runtime_error when the file cannot be opened, is empty, or is a directory. */
FileFormat recognise(const std::string& path);

/* "an IRIS", for a file whose format is kForeign. */
std::string foreignFormat(const std::string& path);

}  // namespace scan

#endif
