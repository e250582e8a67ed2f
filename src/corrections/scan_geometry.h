/*
 * scan_geometry.h - ranges and beam heights of a scan's gates, and the base of the melting layer,
 * in metres. The first gate counts as range 0, and every ray has the elevation of the scan.
 */
#ifndef CLUTTER_CORRECTIONS_SCAN_GEOMETRY_H
#define CLUTTER_CORRECTIONS_SCAN_GEOMETRY_H

#include <vector>

#include "base/array.h"
#include "clutterclassifier/Cpluvek.h"
#include "corrections/beam.h"
#include "model/field_access.h"

namespace clutter::corrections {

inline std::vector<double> gateRanges(const Cpluvek& scan) {
    std::vector<double> ranges(base::cellCount(scan.ngates, 1));
    double gate = 0.0;
    for (double& range : ranges) {
        range = gate++ * static_cast<double>(scan.gatesize);
    }
    return ranges;
}

inline std::vector<double> gateHeights(const Cpluvek& scan) {
    std::vector<double> heights = gateRanges(scan);
    const double elevation = static_cast<double>(model::elevationOf(scan));
    for (double& value : heights) {
        value = beamHeight(value, elevation);
    }
    return heights;
}

/* The melting layer is assumed to begin 500 m below the freezing level. */
inline double meltingLayerBase(float freezingLevel) {
    return static_cast<double>(freezingLevel) - 500.0;
}

}  // namespace clutter::corrections

#endif
