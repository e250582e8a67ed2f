/* containers.cpp - readers of ODIM_H5 and CfRadial on the page's own HDF5; nothing is written. */
#include "scan/formats/containers/containers.h"

#include <filesystem>
#include <stdexcept>

#include "scan/formats/cfradial/read_cfradial.h"
#include "scan/formats/odim/read_odim.h"

namespace scan {
namespace {

Scan readHdf5(const std::string& path) {
    ValueBudget budget(std::filesystem::file_size(path));
    const hdf5::Group file = hdf5::openFile(path);
    if (odim::isOdim(file)) {
        return odim::readOdim(file, budget);
    }
    return cfradial::readCfRadial(netcdf::openFile(path), budget);
}

Scan readClassic(const std::string&) {
    throw std::runtime_error(
        "is a classic NetCDF file, which this page does not read; nccopy -k nc4 makes it one that "
        "it reads");
}

template <class Result, class... Arguments>
Result refuse(Arguments...) {
    throw std::runtime_error("cannot be written here: use the program for ODIM_H5 and CfRadial");
}

}  // namespace

const Containers& containers() {
    static const Containers all = {
        kContainersLayout, readHdf5, readClassic, refuse, refuse, refuse, refuse, refuse};
    return all;
}

}  // namespace scan
