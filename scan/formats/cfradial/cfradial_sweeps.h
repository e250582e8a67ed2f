/* cfradial_sweeps.h - which rays of a CfRadial file are a sweep: indices in a stack, or groups. */
#ifndef SCAN_FORMATS_CFRADIAL_CFRADIAL_SWEEPS_H
#define SCAN_FORMATS_CFRADIAL_CFRADIAL_SWEEPS_H

#include <cmath>
#include <string>
#include <vector>

#include "scan/formats/netcdf/nc_group.h"

namespace scan::cfradial {

/* A sweep's rays in the stack, and what is said of it as a whole. */
struct Slice {
    std::size_t begin = 0, end = 0;
    int number = 0;
    double fixedAngleDeg = NAN;
    std::string mode;
};

/* By the indices of the sweeps' rays; all rays are one sweep where there are none. */
std::vector<Slice> slicesOf(const netcdf::Group& file, std::size_t rays, ValueBudget& budget,
                            std::vector<std::string>& damage);

/* Groups sweep_1 ... sweep_N in the order of their numbers. */
std::vector<netcdf::Group> sweepGroups(const netcdf::Group& file);

/* The number of such a group; otherwise, where it has none. */
int sweepNumber(const netcdf::Group& group, int otherwise, ValueBudget& budget);

}  // namespace scan::cfradial

#endif
