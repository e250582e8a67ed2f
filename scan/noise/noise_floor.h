/*
 * noise_floor.h - what counts as noise in a sweep, and where that is known from.
 *
 * In this order: the caller; a signal-to-noise field of the file, or its calibration constant; the
 * marks of gates without echo that the format has; an estimate from all sweeps of the scan. Where
 * the noise was removed before the file was written, every value that is left is an echo.
 */
#ifndef SCAN_NOISE_NOISE_FLOOR_H
#define SCAN_NOISE_NOISE_FLOOR_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "scan/fields/field_choice.h"
#include "scan/noise/estimate_noise.h"
#include "scan/scan.h"

namespace scan {

enum class NoiseSource { kGiven, kSnrField, kFile, kFormat, kEstimate };

struct NoiseFloor {
    NoiseSource source = NoiseSource::kGiven;
    double radarConstantDb = 0;              // SNR = Z - 20 log10(range in km) + this
    double minSnrDb = kEveryValue;           // lowest signal-to-noise ratio of an echo
    double polarimetricSnrDb = kEveryValue;  // lowest ratio at which more than Z is meaningful
    const Field* snr = nullptr;              // kSnrField: holds the ratio, gate by gate
    bool removed = false;                    // before the file was written
    NoiseEstimate estimate;                  // kEstimate
    std::vector<std::string> warnings;
};

/* What the caller gives. */
struct GivenNoise {
    std::optional<double> radarConstantDb, minSnrDb;
};

/* The estimates of a scan: one for all sweeps that share gate spacing and name of the reflectivity,
 * made when it is first needed. Refers to the scan. */
class NoiseEstimates {
  public:
    NoiseEstimates(const Scan& scan, FieldMap map) : scan_(scan), map_(std::move(map)) {}

    /* That of a sweep, which need not be among those of the scan. */
    const NoiseEstimate& of(const Sweep& sweep, const FieldChoice& fields);

  private:
    NoiseEstimate estimate(const Sweep& sweep, const FieldChoice& fields) const;

    const Scan& scan_;
    FieldMap map_;
    std::map<std::pair<double, std::string>, NoiseEstimate> known_;
};

/* The sweep must have a reflectivity. */
NoiseFloor findNoiseFloor(const Scan& scan, const Sweep& sweep, const FieldChoice& fields,
                          const GivenNoise& given, NoiseEstimates& estimates);

/* Whether a gate of the reflectivity lies below a signal-to-noise ratio; not without a value. */
std::vector<std::uint8_t> gatesBelow(double ratioDb, const NoiseFloor& noise, const Sweep& sweep,
                                     const Field& reflectivity);

/* One phrase: "estimated 36.8 dB from the noise in 24 of 28 rings". */
std::string describeNoise(const NoiseFloor& noise);

}  // namespace scan

#endif
