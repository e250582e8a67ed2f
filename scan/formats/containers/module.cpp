/*
 * The module's entry. One call at a time: the NetCDF library is not safe for threads, and it calls
 * the HDF5 library.
 */
#include <filesystem>
#include <mutex>
#include <stdexcept>

#include "scan/formats/containers/containers.h"
#include "scan/formats/hdf5/hdf5_group.h"
#include "scan/formats/odim/read_odim.h"

namespace scan {
namespace {

std::mutex& oneAtATime() {
    static std::mutex mutex;
    return mutex;
}

Scan readNetcdf(const std::string&) {
    throw std::runtime_error("is a NetCDF file");
}

Scan readHdf5(const std::string& path) {
    const std::lock_guard<std::mutex> lock(oneAtATime());
    const hdf5::QuietErrors quiet;
    ValueBudget budget(std::filesystem::file_size(path));
    const hdf5::Group file = hdf5::openFile(path);
    if (odim::isOdim(file)) {
        return odim::readOdim(file, budget);
    }
    throw std::runtime_error("is an HDF5 file, but not one of ODIM_H5 or CfRadial");
}

constexpr Containers kContainers = {kContainersLayout, readHdf5, readNetcdf};

}  // namespace
}  // namespace scan

extern "C" __attribute__((visibility("default"))) const scan::Containers*
clutterclassifier_containers() {
    return &scan::kContainers;
}
