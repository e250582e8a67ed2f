/*
 * odim_rays.h - where and when the rays of an ODIM_H5 dataset were measured.
 */
#ifndef SCAN_FORMATS_ODIM_ODIM_RAYS_H
#define SCAN_FORMATS_ODIM_ODIM_RAYS_H

#include "scan/formats/odim/odim_levels.h"
#include "scan/scan.h"

namespace scan::odim {

/* Seconds since 1970 of a date ("20151018") and a time ("180003") in `what`; nothing if one is
 * missing or impossible. */
std::optional<double> timeOf(const Level& level, const char* date, const char* time);

/*
 * Fills rhi, mode, fixedAngleDeg, azimuthDeg, elevationDeg and rayTimeS of a sweep whose nrays is
 * known. Rays are kept in the order of the file: where/a1gate is only the first in time, and does
 * not say that the data are to be rolled. Throws std::runtime_error when no elevation is known.
 */
void fillRays(const Level& dataset, bool elevationScan, Sweep& sweep);

}  // namespace scan::odim

#endif
