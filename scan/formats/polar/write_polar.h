/* write_polar.h - one field of a sweep as a polar data file. */
#ifndef SCAN_FORMATS_POLAR_WRITE_POLAR_H
#define SCAN_FORMATS_POLAR_WRITE_POLAR_H

#include <string>
#include <vector>

#include "scan/formats/writing/output_file.h"
#include "scan/scan.h"

namespace scan {

/* Codes of the products that hold one field, which alone can be written. */
std::vector<int> singleParameterProducts();

/*
 * The field as a product of that code, with a layer that says which gates have a value: integers
 * have no other way to say so. Returns notes about what the file cannot hold; throws
 * std::runtime_error when that is the geometry.
 */
std::vector<std::string> writePolarData(const OutputFile& file, const Scan& scan,
                                        const Sweep& sweep, const Field& field, int product);

}  // namespace scan

#endif
