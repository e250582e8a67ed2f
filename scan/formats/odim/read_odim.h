/* read_odim.h - ODIM_H5 files, releases 2.0 to 2.4, into a Scan. */
#ifndef SCAN_FORMATS_ODIM_READ_ODIM_H
#define SCAN_FORMATS_ODIM_READ_ODIM_H

#include "scan/formats/hdf5/hdf5_group.h"
#include "scan/formats/reading/value_budget.h"
#include "scan/scan.h"

namespace scan::odim {

/* Whether an HDF5 file is one of ODIM_H5. */
bool isOdim(const hdf5::Group& file);

/*
 * Objects SCAN, PVOL, AZIM and ELEV. Gates that were measured without an echo hold the field's
 * noEcho. Sweeps are numbered as the file numbers its datasets, from 1. Throws std::runtime_error
 * with the group and the attribute that is wrong.
 */
Scan readOdim(const hdf5::Group& file, ValueBudget& budget);

}  // namespace scan::odim

#endif
