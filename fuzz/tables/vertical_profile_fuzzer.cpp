/*
 * Reads a library of vertical profiles and corrects a few gates with it: together as one of them
 * alone.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "clutterclassifier/Cradarpro.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

constexpr int kGates = 6;
constexpr double kReflectivity[kGates] = {100.0, 1000.0, 10.0, 1.0, 5e4, 300.0};
constexpr double kRange[kGates] = {2e4, 2e4, 9e4, 1e3, 5e4, 6e4};
constexpr double kFreezing[kGates] = {300.0, NAN, 2000.0, 1500.0, 3000.0, 0.0};

struct Gates {
    double z[kGates], range[kGates], freezing[kGates];

    Gates() {
        std::copy(std::begin(kReflectivity), std::end(kReflectivity), z);
        std::copy(std::begin(kRange), std::end(kRange), range);
        std::copy(std::begin(kFreezing), std::end(kFreezing), freezing);
    }
    int correct(const std::string& path, int from, int n) {
        Cradarpro radar;
        std::string file = path;
        return radar.VPRCorrection(z + from, z + from, range + from, freezing + from, n, 0.01,
                                   0.017, file.data(), 0);
    }
};

void correct(const std::string& path, int gate) {
    Gates together, alone;
    require(together.correct(path, 0, kGates) == 1, "the correction always returns 1");
    alone.correct(path, gate, 1);
    require(sameBits(static_cast<float>(together.z[gate]), static_cast<float>(alone.z[gate])),
            "a gate is corrected alone as among others");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string path = inputFile(data, size);
    Cradarpro radar;
    double *vpr = nullptr, dh = 0.0;
    int profiles = 0, levels = 0, reference = 0;
    require(radar.GetVPR(&vpr, profiles, levels, reference, dh, path.data(), 0) == 1,
            "the reader always returns 1");
    for (int i = 0; i < profiles * levels; ++i) {
        require(!(vpr[i] < 0.0), "a power of ten is never negative; it may be no number");
    }
    delete[] vpr;
    correct(path, static_cast<int>(size % kGates));
    return 0;
}
