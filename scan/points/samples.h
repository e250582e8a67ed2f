/* samples.h - values of fields at points, through the library's extraction operations. */
#ifndef SCAN_POINTS_SAMPLES_H
#define SCAN_POINTS_SAMPLES_H

#include <string>
#include <vector>

#include "scan/formats/record/read_record.h"
#include "scan/points/point_list.h"
#include "scan/scan.h"

namespace scan {

/* Range and azimuth of map points, seen from a radar at (east, north) along beams of an elevation;
 * the curvature of the Earth is left out. */
Points polarFromMap(const Points& map, double east, double north, double elevationDeg);

/* Points of a sweep as the library takes them: ranges from the near edge of the first gate,
 * azimuths of the rays themselves; and whether a point lies within the sweep. */
struct GatePoints {
    Points points;
    std::vector<bool> covered;
};
GatePoints gatePoints(const Sweep& sweep, const Points& points);

/* One column a field, one value a point; NaN where a point has none. */
struct Samples {
    std::vector<std::string> names;
    std::vector<std::vector<float>> columns;
};

/*
 * Fields of a sweep at ranges and azimuths: the gate whose centre is nearest on the ray that is
 * nearest around the circle. Points before the first or past the last gate, and those farther
 * from any ray than the rays are from each other, have no value. No names: all fields.
 *
 * Throws std::runtime_error for a range-height sweep and for a name that the sweep does not have.
 */
Samples sampleSweep(const Scan& scan, const Sweep& sweep, const Points& points,
                    const std::vector<std::string>& names);

/* Fields of a Cartesian record at map points; those outside the grid have no value. */
Samples sampleGrid(const RecordArray& grid, const Points& points,
                   const std::vector<std::string>& names);

}  // namespace scan

#endif
