/* odim_classes.h - classes as quality groups of an ODIM_H5 dataset. */
#ifndef SCAN_FORMATS_ODIM_ODIM_CLASSES_H
#define SCAN_FORMATS_ODIM_ODIM_CLASSES_H

#include <functional>
#include <vector>

#include "scan/formats/hdf5/hdf5_writer.h"
#include "scan/formats/writing/sweep_classes.h"

namespace scan::odim {

/* Numbers of groups that a dataset does not have yet. */
struct FreeNumbers {
    int data = 1, quality = 1;
};

/* Puts the values of a sweep in the order of the file's rays. */
using Order = std::function<std::vector<float>(const std::vector<float>&)>;

/* Quality groups of the classes and of how certain they are, with how/task and a legend; the
 * classes also as a quantity among the data, where form asks for it. */
void writeClasses(const hdf5::Writer& dataset, FreeNumbers free, const SweepClasses& entry,
                  const ClassForm& form, const Order& order);

}  // namespace scan::odim

#endif
