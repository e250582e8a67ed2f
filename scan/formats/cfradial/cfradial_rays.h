/*
 * cfradial_rays.h - the rays of a CfRadial file or sweep group: their angles, times and gates.
 */
#ifndef SCAN_FORMATS_CFRADIAL_CFRADIAL_RAYS_H
#define SCAN_FORMATS_CFRADIAL_CFRADIAL_RAYS_H

#include <cstdint>
#include <string>
#include <vector>

#include "scan/formats/netcdf/nc_group.h"
#include "scan/scan.h"

namespace scan::cfradial {

/* All rays of a group, stacked. Vectors of something a ray may be empty: not in the file. */
struct Rays {
    std::size_t count = 0;
    std::size_t maxGates = 0;
    std::string rayDimension, gateDimension;  // names
    std::vector<double> azimuthDeg, elevationDeg, timeS, nyquist;
    std::vector<double> firstM, spacingM;  // one a ray, or one for all
    std::vector<int> gates;                // one a ray, where they differ
    std::vector<std::size_t> start;        // of each ray in ragged variables
    bool irregular = false;                // the range is not evenly spaced
};

/* Throws std::runtime_error when there are no azimuths, elevations or ranges of equal rays. */
Rays readRays(const netcdf::Group& group, ValueBudget& budget);

/* The geometry of the rays from begin to end - 1; a sweep without a mode is judged by its angles.
 */
void fillSweep(const Rays& rays, std::size_t begin, std::size_t end, Sweep& sweep);

/* Variables of one value a gate, decoded, for all rays: stacked or ragged. */
struct StackedField {
    Field field;  // without values
    bool ragged = false;
    std::vector<float> values;
};
std::vector<StackedField> readFields(const netcdf::Group& group, const Rays& rays,
                                     ValueBudget& budget, std::vector<std::string>& damage);

/* The values of rays begin to end - 1, each padded with NaN to the sweep's gates. */
Field cutField(const StackedField& stacked, const Rays& rays, std::size_t begin,
               const Sweep& sweep);

}  // namespace scan::cfradial

#endif
