/* write_uf.h - Universal Format files of scans, with the classes as one more field. */
#ifndef SCAN_FORMATS_UF_WRITE_UF_H
#define SCAN_FORMATS_UF_WRITE_UF_H

#include <string>
#include <vector>

#include "scan/formats/writing/output_file.h"
#include "scan/formats/writing/sweep_classes.h"

class Cufrw;

namespace scan {

/*
 * Adds the classes to the rays of a file that was read, words, and writes it. Without words, the
 * rays are made from the sweeps. Everything that was read stays; gates without a class hold the
 * ray's missing-data value. An earlier class field gives way, another field of that name makes the
 * classes "C1", "C2", ... Returns notes about what the format cannot hold; throws
 * std::runtime_error when a ray has no room for one more field.
 */
std::vector<std::string> writeUniversalFormat(const OutputFile& file, const Scan& scan,
                                              Cufrw* words,
                                              const std::vector<SweepClasses>& classes);

/* A scan without classes. */
std::vector<std::string> writeUniversalFormat(const OutputFile& file, const Scan& scan,
                                              Cufrw* words);

}  // namespace scan

#endif
