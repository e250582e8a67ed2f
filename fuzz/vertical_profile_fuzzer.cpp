/* Reads a library of vertical profiles and corrects a few gates with it. */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "clutterclassifier/Cradarpro.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string path = clutter::fuzz::inputFile(data, size);
    Cradarpro radar;
    double *vpr = nullptr, dh = 0.0;
    int profiles = 0, levels = 0, reference = 0;
    if (radar.GetVPR(&vpr, profiles, levels, reference, dh, path.data(), 0) != 1) std::abort();
    // A power of ten is never negative; it may be no number.
    for (int i = 0; i < profiles * levels; ++i) {
        if (vpr[i] < 0.0) std::abort();
    }
    delete[] vpr;
    double z[] = {100.0, 1000.0, 10.0}, range[] = {2e4, 2e4, 9e4};
    double freezing[] = {300.0, NAN, 2000.0};
    if (radar.VPRCorrection(z, z, range, freezing, 3, 0.01, 0.017, path.data(), 0) != 1) {
        std::abort();
    }
    return 0;
}
