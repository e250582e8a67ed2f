/*
 * picture.h - pictures of a sweep: plan position, or height against range for a range-height scan.
 */
#ifndef CLI_PICTURE_PICTURE_H
#define CLI_PICTURE_PICTURE_H

#include <string>
#include <vector>

#include "picture/quantity.h"
#include "scan/classes/classify_sweep.h"
#include "scan/scan.h"

namespace cli {

/*
 * One panel per field, side by side, with a shared title: PNG, SVG or PDF by the ending of path.
 * A class field (isClassField) gets the class colours and a legend with the share of each class,
 * any other field gets a colour bar. NaN is drawn light grey.
 *
 * The file appears complete or not at all: it is written under a temporary name and renamed. Throws
 * std::invalid_argument for an ending that names no format, no field at all, or a field that does
 * not have nrays x ngates values; std::runtime_error with the reason when the file cannot be
 * written.
 */
void drawPanels(const scan::Scan& scan, const scan::Sweep& sweep,
                const std::vector<scan::Field>& fields, const PictureOptions& options,
                const std::string& path);

/* Reflectivity, or any other field, beside the classes (0 precipitation, 3 noise, 5 clutter). */
void drawClasses(const scan::Scan& scan, const scan::Sweep& sweep, const scan::Field& field,
                 const std::vector<float>& classes, const PictureOptions& options,
                 const std::string& path);

/* Reflectivity, classes, probability of precipitation and deciding input of a sweep that was
 * classified with its certainty. */
void drawReasons(const scan::Scan& scan, const scan::Sweep& sweep,
                 const scan::ClassifiedSweep& result, const PictureOptions& options,
                 const std::string& path);

}  // namespace cli

#endif
