/*
 * containers.h - formats that need the HDF5 or NetCDF library. Their code is a module of its own,
 * loaded when the first such file is met: the libraries cost several milliseconds at every start.
 */
#ifndef SCAN_FORMATS_CONTAINERS_CONTAINERS_H
#define SCAN_FORMATS_CONTAINERS_CONTAINERS_H

#include <string>
#include <vector>

#include "scan/formats/writing/sweep_classes.h"
#include "scan/scan.h"

namespace scan {

/* What the module offers. Every function throws std::runtime_error, and is safe to call from
 * several threads. */
struct Containers {
    /* Bytes of Scan, Sweep and Field as the module was compiled: it must come from the same build.
     */
    std::size_t layout;
    Scan (*readHdf5)(const std::string& path);
    Scan (*readNetcdf)(const std::string& path);

    /* Writers return sentences about what the format cannot hold. */
    using Write = std::vector<std::string> (*)(const std::string& path, const Scan& scan,
                                               const std::vector<SweepClasses>& classes,
                                               const ClassForm& form);
    Write writeOdim, writeCfRadial1, writeCfRadial2;

    /* Classes beside what an existing file holds, and fields of it cleaned. */
    using Add = std::vector<std::string> (*)(const std::string& path,
                                             const std::vector<SweepClasses>& classes,
                                             const ClassForm& form);
    Add addOdimClasses, addCfRadialClasses;

    /* ".h5", ".nc" or ".nc4": what a file of HDF5 or NetCDF is best written as. */
    const char* (*endingOf)(const std::string& path);
};

constexpr std::size_t kContainersLayout =
    sizeof(Scan) * 1000000 + sizeof(Sweep) * 1000 + sizeof(Field);

/* Loads the module at the first call. Throws std::runtime_error when it cannot be loaded. */
const Containers& containers();

}  // namespace scan

/* The module's one exported function. */
extern "C" const scan::Containers* clutterclassifier_containers();

#endif
