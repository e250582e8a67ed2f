/* Reads a NEXRAD Level 2 file. */
#include <cstddef>
#include <cstdint>
#include <stdexcept>

#include "fuzz/scan/sound_scan.h"
#include "fuzz/support/input_file.h"
#include "scan/formats/nexrad/read_nexrad.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        clutter::fuzz::requireSound(scan::readNexrad(clutter::fuzz::inputFile(data, size)));
    } catch (const std::runtime_error&) {
    }
    return 0;
}
