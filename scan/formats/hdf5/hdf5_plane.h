/*
 * hdf5_plane.h - two-dimensional data of an HDF5 file, decoded with gain and offset.
 */
#ifndef SCAN_FORMATS_HDF5_HDF5_PLANE_H
#define SCAN_FORMATS_HDF5_HDF5_PLANE_H

#include <string>
#include <vector>

#include "scan/formats/hdf5/hdf5_group.h"
#include "scan/formats/reading/packing.h"
#include "scan/formats/reading/value_budget.h"

namespace scan::hdf5 {

struct Plane {
    int rows = 0;
    int columns = 0;
    std::vector<float> values;  // NaN where nodata
};

/* The two-dimensional data `name` of a group. Throws std::runtime_error when there is none, when it
 * is not numbers in two dimensions, is not in this file, or is larger than budget allows. */
Plane readPlane(const Group& group, const std::string& name, const Packing& packing,
                ValueBudget& budget);

}  // namespace scan::hdf5

#endif
