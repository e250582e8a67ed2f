/*
 * nexrad_radial.h - one radial of a NEXRAD Level 2 volume, from a message of type 31 or, before
 * 2008, of type 1.
 */
#ifndef SCAN_FORMATS_NEXRAD_NEXRAD_RADIAL_H
#define SCAN_FORMATS_NEXRAD_NEXRAD_RADIAL_H

#include <optional>
#include <string>
#include <vector>

#include "scan/formats/reading/big_endian.h"

namespace scan::nexrad {

/* One moment: value = (code - offset) / scale, of codes from firstCode on. */
struct Moment {
    std::string name;  // "REF"
    int gates = 0;
    double firstM = 0;  // range of the first gate's centre
    double spacingM = 0;
    double scale = 1;
    double offset = 0;
    int wordBytes = 1;
    BigEndian codes;  // borrowed from the message
};

struct Radial {
    double timeS = 0;  // since 1970
    double azimuthDeg = 0;
    double elevationDeg = 0;
    int elevationNumber = 0;
    int status = 0;  // 0 or 5: begins an elevation, 3: a volume
    double nyquist = 0;
    std::optional<double> calibrationDb;  // reflectivity at 1 km that equals the noise
    std::optional<double> latitudeDeg, longitudeDeg, altitudeM;
    std::vector<Moment> moments;
};

/* Nothing if the message is damaged. message begins after its header. */
std::optional<Radial> parseMessage31(BigEndian message);
std::optional<Radial> parseMessage1(BigEndian message);

}  // namespace scan::nexrad

#endif
