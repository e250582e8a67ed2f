/* sound_scan.h - what holds for every scan that a reader returns. */
#ifndef CLUTTER_FUZZ_SCAN_SOUND_SCAN_H
#define CLUTTER_FUZZ_SCAN_SOUND_SCAN_H

#include <cstddef>

#include "fuzz/support/require.h"
#include "scan/scan.h"

namespace clutter::fuzz {

inline std::size_t cellsOf(const scan::Sweep& sweep) {
    return static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates);
}

inline void requireSound(const scan::Sweep& sweep) {
    require(sweep.nrays >= 0 && sweep.ngates >= 0, "sizes are not negative");
    const auto rays = static_cast<std::size_t>(sweep.nrays);
    require(sweep.azimuthDeg.size() == rays && sweep.elevationDeg.size() == rays, "angles per ray");
    require(sweep.rayTimeS.empty() || sweep.rayTimeS.size() == rays, "times per ray");
    require(sweep.rayGates.empty() || sweep.rayGates.size() == rays, "lengths per ray");
    for (const int gates : sweep.rayGates) {
        require(gates >= 0 && gates <= sweep.ngates, "a ray is not longer than the longest");
    }
    for (const scan::Field& field : sweep.fields) {
        require(field.values.size() == cellsOf(sweep), "a field fills its sweep");
    }
}

inline void requireSound(const scan::Scan& scan) {
    for (const scan::Sweep& sweep : scan.sweeps) {
        requireSound(sweep);
    }
}

}  // namespace clutter::fuzz

#endif
