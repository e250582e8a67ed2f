/* Reads a NEXRAD Level 2 file: every field is as large as its sweep. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "input_file.h"
#include "scan/formats/nexrad/read_nexrad.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const scan::Scan scan = scan::readNexrad(clutter::fuzz::inputFile(data, size));
        for (const scan::Sweep& sweep : scan.sweeps) {
            const auto rays = static_cast<std::size_t>(sweep.nrays);
            for (const scan::Field& field : sweep.fields) {
                if (field.values.size() != rays * static_cast<std::size_t>(sweep.ngates)) {
                    std::abort();
                }
            }
            if (sweep.azimuthDeg.size() != rays || sweep.rayTimeS.size() != rays) {
                std::abort();
            }
        }
    } catch (const std::runtime_error&) {
        return 0;
    }
    return 0;
}
