/*
 * The module's entry. One call at a time: the NetCDF library is not safe for threads, and it calls
 * the HDF5 library.
 */
#include <filesystem>
#include <mutex>
#include <optional>
#include <stdexcept>

#include "scan/formats/cfradial/read_cfradial.h"
#include "scan/formats/cfradial/write_cfradial.h"
#include "scan/formats/containers/containers.h"
#include "scan/formats/hdf5/hdf5_group.h"
#include "scan/formats/odim/read_odim.h"
#include "scan/formats/odim/write_odim.h"
#include "scan/formats/reading/recognise.h"

namespace scan {
namespace {

std::mutex& oneAtATime() {
    static std::mutex mutex;
    return mutex;
}

Scan readAsCfRadial(const std::string& path) {
    ValueBudget budget(std::filesystem::file_size(path));
    return cfradial::readCfRadial(netcdf::openFile(path), budget);
}

Scan readNetcdf(const std::string& path) {
    const std::lock_guard<std::mutex> lock(oneAtATime());
    const hdf5::QuietErrors quiet;
    return readAsCfRadial(path);
}

/* Nothing if it is HDF5, but not ODIM_H5. */
std::optional<Scan> readAsOdim(const std::string& path) {
    ValueBudget budget(std::filesystem::file_size(path));
    const hdf5::Group file = hdf5::openFile(path);
    if (!odim::isOdim(file)) {
        if (file.find("scan0") && file.find("what")) {
            throw std::runtime_error("is a GAMIC" + std::string(kConvert));
        }
        hdf5::requireTree(file);
        return std::nullopt;
    }
    return odim::readOdim(file, budget);
}

Scan readHdf5(const std::string& path) {
    const std::lock_guard<std::mutex> lock(oneAtATime());
    const hdf5::QuietErrors quiet;
    std::optional<Scan> scan = readAsOdim(path);
    return scan ? std::move(*scan) : readAsCfRadial(path);
}

/* Any of the writers, one call at a time. */
template <auto write, class... Arguments>
auto guarded(Arguments... arguments) {
    const std::lock_guard<std::mutex> lock(oneAtATime());
    const hdf5::QuietErrors quiet;
    return write(arguments...);
}

const char* endingOf(const std::string& path) {
    const std::lock_guard<std::mutex> lock(oneAtATime());
    const hdf5::QuietErrors quiet;
    if (H5Fis_hdf5(path.c_str()) > 0) {
        const hdf5::Group file = hdf5::openFile(path);
        if (odim::isOdim(file)) {
            return ".h5";
        }
        hdf5::requireTree(file);
    }
    return cfradial::hasSweepGroups(netcdf::openFile(path)) ? ".nc4" : ".nc";
}

constexpr Containers kContainers = {
    kContainersLayout,
    readHdf5,
    readNetcdf,
    guarded<odim::writeOdim>,
    guarded<cfradial::writeCfRadial1>,
    guarded<cfradial::writeCfRadial2>,
    guarded<odim::addOdimClasses>,
    guarded<cfradial::addCfRadialClasses>,
    endingOf,
};

}  // namespace
}  // namespace scan

extern "C" __attribute__((visibility("default"))) const scan::Containers*
clutterclassifier_containers() {
    return &scan::kContainers;
}
