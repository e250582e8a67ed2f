/*
 * packing.h - numbers as files pack them, with a gain and an offset, and marks of what is missing.
 */
#ifndef SCAN_FORMATS_READING_PACKING_H
#define SCAN_FORMATS_READING_PACKING_H

#include <cmath>
#include <limits>
#include <optional>

#include "scan/scan.h"

namespace scan {

/* value = raw * gain + offset, in double precision, rounded once. */
struct Packing {
    double gain = 1;
    double offset = 0;
    std::optional<double> nodata;    // raw value of what was not measured
    std::optional<double> missing;   // another one
    std::optional<double> undetect;  // raw value of what was measured without an echo
};

/* A mark in double precision may name what was stored in single precision. NaN equals nothing. */
class Mark {
  public:
    explicit Mark(const std::optional<double>& mark)
        : value_(mark.value_or(std::numeric_limits<double>::quiet_NaN())),
          single_(static_cast<double>(static_cast<float>(value_))) {}
    [[nodiscard]] bool matches(double raw) const { return (raw == value_) | (raw == single_); }

  private:
    double value_, single_;
};

/* Decodes raw values: NaN where one is marked as missing. What is marked as measured stays a value,
 * also where a writer marks both alike. */
class Decoder {
  public:
    explicit Decoder(const Packing& packing)
        : gain_(packing.gain),
          offset_(packing.offset),
          nodata_(packing.nodata),
          missing_(packing.missing),
          undetect_(packing.undetect) {}

    float operator()(double raw) const {
        const auto value = static_cast<float>(raw * gain_ + offset_);
        const int marked = int{nodata_.matches(raw)} | int{missing_.matches(raw)};
        const int absent = marked & int{!undetect_.matches(raw)};
        return absent != 0 ? kNoValue : value;
    }

  private:
    double gain_, offset_;
    Mark nodata_, missing_, undetect_;
};

/* What gates without an echo hold after decoding; nothing if that is not a number. */
inline std::optional<float> noEchoOf(const Packing& packing) {
    const double value = packing.undetect.value_or(NAN) * packing.gain + packing.offset;
    return std::isfinite(value) ? std::optional<float>(static_cast<float>(value)) : std::nullopt;
}

}  // namespace scan

#endif
