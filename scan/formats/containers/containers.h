/*
 * containers.h - formats that need the HDF5 or NetCDF library. Their code is a module of its own,
 * loaded when the first such file is met: the libraries cost several milliseconds at every start.
 */
#ifndef SCAN_FORMATS_CONTAINERS_CONTAINERS_H
#define SCAN_FORMATS_CONTAINERS_CONTAINERS_H

#include <string>

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
};

constexpr std::size_t kContainersLayout =
    sizeof(Scan) * 1000000 + sizeof(Sweep) * 1000 + sizeof(Field);

/* Loads the module at the first call. Throws std::runtime_error when it cannot be loaded. */
const Containers& containers();

}  // namespace scan

/* The module's one exported function. */
extern "C" const scan::Containers* clutterclassifier_containers();

#endif
