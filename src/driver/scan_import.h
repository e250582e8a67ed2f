/*
 * scan_import.h - a host's arrays of doubles, read ray by ray: no scan-sized copy is made.
 */
#ifndef CLUTTER_DRIVER_SCAN_IMPORT_H
#define CLUTTER_DRIVER_SCAN_IMPORT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "dsp/windows/row_source.h"

namespace clutter::driver {

/* A field of doubles, or no field, rounded to floats a ray at a time. */
class NarrowedRows : public dsp::RowSource {
  public:
    NarrowedRows(const double* field, dsp::PolarShape shape);

    const float* row(int ray) override;
    dsp::RowSource* orNull() { return field_ != nullptr ? this : nullptr; }

  private:
    const double* field_;
    dsp::PolarShape shape_;
    int held_ = -1;
    std::vector<float> row_;
};

/* Parameters of the signal-to-noise test. */
struct NoiseTest {
    float gateSizeM;
    float radarConstantDb;
    float minSnrDb;
};

/* Noise or echo, one byte a gate; as rows, the class codes of both. */
class NoiseFlags : public dsp::RowSource {
  public:
    explicit NoiseFlags(dsp::PolarShape shape);

    /* Tests every gate of a reflectivity field. Returns the number of echoes. */
    std::size_t flag(dsp::RowSource& reflectivity, const NoiseTest& test);

    const float* row(int ray) override;

  private:
    dsp::PolarShape shape_;
    std::vector<std::uint8_t> isNoise_;
    std::vector<float> row_;
};

}  // namespace clutter::driver

#endif
