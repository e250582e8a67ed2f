/*
 * header.h - parses and validates the header of a polar data file.
 */
#ifndef CLUTTER_FORMATS_POLAR_HEADER_H
#define CLUTTER_FORMATS_POLAR_HEADER_H

#include <cstddef>

#include "base/files/byte_cursor.h"
#include "clutterclassifier/Cpluvek.h"

namespace clutter::formats {

struct PolarHeader {
    short product = 0;
    int nrays = 0;
    int ngates = 0;
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    float longitude = 0.0f;  // degrees
    float latitude = 0.0f;
    float heights[2] = {};  // m
    float altitude = 0.0f;  // m
    float radarconst = 0.0f;
    float wavelength = 0.0f;  // m
    float gatesize = 0.0f;    // m
    float pulsedepth = 0.0f;  // m
    float rpm = 0.0f;
    float prf = 0.0f;
    float nsamples = 0.0f;
    float nyquist = 0.0f;  // m/s
    int firstgate = 0;
    float elevation = 0.0f;  // rad

    std::size_t cells() const {
        return static_cast<std::size_t>(nrays) * static_cast<std::size_t>(ngates);
    }
};

/* Result codes of reading, as hosts see them. */
constexpr int kPolarRead = 1;
constexpr int kPolarNotOpened = 0;
constexpr int kPolarUnusable = -1;
constexpr int kPolarUnknownProduct = -2;

/*
 * Parses the header of a file; bytes past its end count as 0. Valid only
 * when kPolarRead is returned: both counts are then positive, and the file may declare that many
 * values (base/files/claims.h). Prints the message for counts below 1.
 */
[[nodiscard]] int readPolarHeader(base::Bytes file, PolarHeader& header);

/* Stores a header in the first record of a scan. */
void storePolarHeader(const PolarHeader& header, Cpluvek& record);

}  // namespace clutter::formats

#endif
