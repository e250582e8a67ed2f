/* Reads a DX file and converts it: 360 rays of 100 or 128 bins, in steps of half a decibel. */
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "clutterclassifier/CGermanRadar.h"
#include "clutterclassifier/Cpluvek.h"
#include "fuzz/support/input_file.h"
#include "fuzz/support/require.h"

namespace {

using namespace clutter::fuzz;

constexpr float kLowestDbz = -32.5f;

void requireScan(const Cpluvek& dbz, const Cpluvek& elevation) {
    require(dbz.nrays == 360 && (dbz.ngates == 100 || dbz.ngates == 128), "the product's sizes");
    require(elevation.nrays == dbz.nrays && elevation.ngates == dbz.ngates, "one grid for both");
    for (int i = 0; i < cellsOf(dbz); ++i) {
        require(dbz.data[i] >= kLowestDbz, "no value below the scale");
        require(std::fmod(dbz.data[i], 0.5f) == 0.0f, "values in steps of half a decibel");
        require(std::isfinite(elevation.data[i]), "elevations are numbers");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = inputFile(data, size);
    const auto radar = std::make_unique<CGermanRadar>();
    Cpluvek records[2];
    const int result = radar->readbinaryfile(in.data());
    radar->german2pluvek(records);
    require((records[1].data != nullptr) == (result == 1), "records hold what was read");
    if (result == 1) {
        requireScan(records[0], records[1]);
    }
    return 0;
}
