/* cfradial_output.h - what both releases of CfRadial have in common when they are written. */
#ifndef SCAN_FORMATS_CFRADIAL_CFRADIAL_OUTPUT_H
#define SCAN_FORMATS_CFRADIAL_CFRADIAL_OUTPUT_H

#include <string>
#include <vector>

#include "scan/formats/netcdf/nc_writer.h"
#include "scan/formats/writing/sweep_classes.h"
#include "scan/scan.h"

namespace scan::cfradial {

constexpr std::size_t kTextWidth = 32;
constexpr char kCoordinates[] = "elevation azimuth range";

/* "2011-05-20T10:54:08Z" */
std::string momentText(const DateTime& time);

/* Times of all rays, in seconds since the time of the scan. */
std::vector<double> secondsSince(const Scan& scan, const Sweep& sweep);

/* Global attributes, place, beam width, frequency and calibration. */
void writeTop(const netcdf::Writer& file, const Scan& scan, const char* conventions,
              const char* version);

/* Attributes of coordinates and fields. */
void describeTime(const netcdf::VariableWriter& variable, const Scan& scan);
void describeRange(const netcdf::VariableWriter& variable, const Sweep& sweep);
void describeAzimuth(const netcdf::VariableWriter& variable);
void describeElevation(const netcdf::VariableWriter& variable);
void describeField(const netcdf::VariableWriter& variable, const Field& field, float noEcho);
void describeClasses(const netcdf::VariableWriter& variable, const ClassForm& form);
void describeCertainty(const netcdf::VariableWriter& variable, const Field& field);

/* Pulse width, repetition time, samples and rate of turn, of each ray. */
void writePulses(const netcdf::Writer& group, int time, std::size_t rays,
                 const Operation& operation);

std::string modeOf(const Sweep& sweep);

/* The classes of a sweep; null if it has none. */
const SweepClasses* entryOf(const Sweep& sweep, const std::vector<SweepClasses>& classes);

}  // namespace scan::cfradial

#endif
