/*
 * scan_inputs.h - the inputs of the fuzzy system, ray by ray: textures of fields, or their values.
 */
#ifndef CLUTTER_DRIVER_SCAN_INPUTS_H
#define CLUTTER_DRIVER_SCAN_INPUTS_H

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "dsp/windows/row_source.h"
#include "dsp/windows/texture.h"
#include "fuzzy/classifiers/inputs.h"

namespace clutter::driver {

/* The fields of a scan, in the order of fuzzy::Field; absent ones are null. */
using ScanFields = std::array<dsp::RowSource*, fuzzy::kFieldCount>;

/* Gates start to end - 1 of a ray. */
struct GateRun {
    int start;
    int end;
};

/* The next run of gates to classify at or after a gate; empty past the last run. noise holds the
 * noise class where a gate is not to be classified. */
GateRun nextRun(const float* noise, int ngates, int from);

/* Allocates in its constructor only. */
class ScanInputs {
  public:
    /*
     * wanted selects the inputs: bit i is input i of the fuzzy system. noise holds the noise class
     * where a gate is not to be classified, and must stay as it is until the last ray. A window
     * that the texture rejects gives textures of 0. All sources must outlive this.
     */
    ScanInputs(const ScanFields& fields, unsigned wanted, dsp::RowSource& noise,
               dsp::PolarShape shape, dsp::Window window);

    dsp::PolarShape shape() const { return shape_; }

    /* The inputs that were wanted and whose field is present. */
    unsigned present() const;

    /* Computes the rows of a ray; going on by one ray is fastest. */
    void moveTo(int ray);

    /* Input i of the current ray, null where it is not present. */
    const float* row(int input) const { return inputs_[input]; }
    const float* noise(int ray) { return noise_.row(ray); }

  private:
    dsp::RowSource& noise_;
    dsp::PolarShape shape_;
    dsp::RowSource* sources_[fuzzy::kInputCount] = {};
    std::optional<dsp::MaskWindow> mask_;
    std::unique_ptr<dsp::FieldTexture> textures_[fuzzy::kInputCount];
    std::vector<float> rows_[fuzzy::kInputCount];  // of textures
    const float* inputs_[fuzzy::kInputCount] = {};
};

}  // namespace clutter::driver

#endif
