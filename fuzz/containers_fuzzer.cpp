/*
 * Reads an HDF5 or NetCDF file, ODIM_H5 or CfRadial. What it finds may also be a fault of those
 * libraries: look at the stack first.
 */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "input_file.h"
#include "scan/formats/containers/containers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const scan::Containers& module = *clutterclassifier_containers();
    const std::string path = clutter::fuzz::inputFile(data, size);
    try {
        const bool classic = size > 0 && data[0] == 'C';
        const scan::Scan scan = classic ? module.readNetcdf(path) : module.readHdf5(path);
        for (const scan::Sweep& sweep : scan.sweeps) {
            const auto rays = static_cast<std::size_t>(sweep.nrays);
            for (const scan::Field& field : sweep.fields) {
                if (field.values.size() != rays * static_cast<std::size_t>(sweep.ngates)) {
                    std::abort();
                }
            }
            if (sweep.azimuthDeg.size() != rays || sweep.elevationDeg.size() != rays) {
                std::abort();
            }
        }
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}
