/*
 * Reads an HDF5 or NetCDF file, ODIM_H5 or CfRadial. What it finds may also be a fault of those
 * libraries: look at the stack first.
 */
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "fuzz/scan/sound_scan.h"
#include "fuzz/support/input_file.h"
#include "scan/formats/containers/containers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const scan::Containers& module = *clutterclassifier_containers();
    const std::string path = clutter::fuzz::inputFile(data, size);
    try {
        const bool classic = size > 0 && data[0] == 'C';
        clutter::fuzz::requireSound(classic ? module.readNetcdf(path) : module.readHdf5(path));
    } catch (const std::exception&) {
    }
    return 0;
}
