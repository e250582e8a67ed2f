/*
 * scan.h - the sweeps of one input file, whatever its format.
 */
#ifndef SCAN_SCAN_H
#define SCAN_SCAN_H

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace scan {

/* "No value". */
constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

/* The library's mark of a gate without rain, in reflectivities. */
constexpr float kNoRainDbz = -32;

/* One quantity of a sweep: nrays x ngates values, ray after ray. NaN is "no value". */
struct Field {
    std::string name;   // as the file has it: "DZ", "PH", "Zh"
    std::string units;  // "" when the file does not say
    std::vector<float> values;
    int wordsPerUnit = 0;  // the finest that Universal Format keeps it; 0: what its quantity needs
    /* value of gates that were measured and have no echo */
    std::optional<float> noEcho = std::nullopt;
    std::string task = {};   // of a quality field of ODIM_H5: what made it; "" for a moment
    std::string place = {};  // group of an ODIM_H5 file that holds it; "" elsewhere
    /* 1 where the value for "no echo" was replaced by NaN; empty when none was. */
    std::vector<std::uint8_t> noEchoGates = {};
    bool leavesOutNoEcho = false;  // by its format, gates without a value have no echo
};

/* Where the rays and gates of a sweep are, and when. */
struct SweepGeometry {
    int number = 0;
    bool rhi = false;  // range-height scan: azimuth fixed, elevation moves
    std::string mode;  // as CfRadial names it: "azimuth_surveillance", "sector"; "" unknown
    double fixedAngleDeg = 0;
    std::vector<double> azimuthDeg;    // one per ray
    std::vector<double> elevationDeg;  // one per ray
    std::vector<double> rayTimeS;      // one per ray, seconds since 1970 in UTC; empty: unknown
    int nrays = 0;
    int ngates = 0;
    std::vector<int> rayGates;  // gates that each ray really has; empty: ngates everywhere
    double gateSpacingM = 0;
    double firstGateM = 0;  // range of the first gate's centre
    double nyquist = 0;     // m/s, 0 unknown
};

/* Rays of one sweep number, padded to the longest. */
struct Sweep : SweepGeometry {
    std::vector<Field> fields;
};

/* The one elevation that represents a sweep. */
inline double middleElevationDeg(const Sweep& sweep) {
    if (!sweep.rhi || sweep.elevationDeg.empty()) {
        return sweep.fixedAngleDeg;
    }
    return sweep.elevationDeg[sweep.elevationDeg.size() / 2];
}

struct DateTime {
    int year = 1900, month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

/* How the radar scanned; 0: unknown. */
struct Operation {
    float pulseLengthM = 0;
    float turnsPerMinute = 0;
    float pulsesPerSecond = 0;
    float pulsesPerRay = 0;
};

struct Scan {
    std::string path;    // as users know it
    std::string opened;  // as it can be opened again: standard input is kept in memory
    std::string format;  // "Universal Format", "field record"
    std::string radarName, siteName;
    std::string history;  // of the file: one line for each program that worked on it
    std::string source;   // identifiers as ODIM_H5 lists them: "WMO:02606,NOD:seang"
    double latitudeDeg = 0, longitudeDeg = 0, altitudeM = 0;
    double beamWidthDeg = 0, wavelengthM = 0;
    Operation operation;
    DateTime time;
    double radarConstantDb = 0;  // only meaningful with hasRadarConstant
    bool hasRadarConstant = false;
    std::vector<Sweep> sweeps;
    std::vector<std::string> damage;    // sentences: parts of the file that could not be read
    std::vector<std::string> oddities;  // sentences: what else is unusual about it
};

}  // namespace scan

#endif
