/* uf_output.h - a Universal Format file with the classes as one more field. */
#ifndef CLI_OUTPUT_UF_OUTPUT_H
#define CLI_OUTPUT_UF_OUTPUT_H

#include <string>
#include <vector>

#include "output/class_output.h"

namespace cli {

/* Name of the class field. */
constexpr char kClassFieldName[] = "CC";

/*
 * Adds the classes to the rays of a file that was read and writes it. Everything that was read
 * stays; gates without a class hold the ray's missing-data value. An earlier class field gives way,
 * another field of that name makes the classes "C1", "C2", ... Throws std::runtime_error when a ray
 * has no room for one more field.
 */
void writeUniversalFormat(const std::string& path, const scan::Scan& scan, Cufrw& words,
                          const std::vector<SweepClasses>& classes);

/* The same from the fields of a sweep that came from elsewhere. */
void writeUniversalFormat(const std::string& path, const scan::Scan& scan,
                          const SweepClasses& classes);

/* A scan without classes: the words of the file that it came from, or else its one sweep. */
void writeUniversalFormat(const std::string& path, const scan::Scan& scan, Cufrw* words);

}  // namespace cli

#endif
