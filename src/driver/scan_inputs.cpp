/*
 * The rows of the fuzzy system's inputs: which field each comes from, and the runs worth
 * evaluating.
 */
#include "driver/scan_inputs.h"

#include <algorithm>
#include <cstddef>

#include "driver/gate_kernels.h"

namespace clutter::driver {
namespace {

// Gates are classified in runs of whole blocks. A few noise gates in between cost less than
// gathering or a new run would; longer gaps are skipped.
constexpr int kBlock = 32;
constexpr int kMaxGap = 3 * kBlock;

}  // namespace

GateRun nextRun(const float* noise, int ngates, int from) {
    GateRun run{ngates, ngates};
    for (int g = from; g < ngates; g += kBlock) {
        const int end = std::min(g + kBlock, ngates);
        if (countEchoes(noise + g, end - g) > 0) {
            if (run.start == ngates) run.start = g;
            run.end = end;
        } else if (run.start < ngates && g - run.end >= kMaxGap) {
            return run;
        }
    }
    return run;
}

ScanInputs::ScanInputs(const ScanFields& fields, unsigned wanted, dsp::RowSource& noise,
                       dsp::PolarShape shape, dsp::Window window)
    : noise_(noise), shape_(shape), sources_{{fields.zhh, true},  {fields.zdr, true},
                                             {fields.pdp, true},  {fields.rhv, true},
                                             {fields.vel, false}, {fields.ldr, false},
                                             {fields.pdf, false}, {fields.rhv, false},
                                             {fields.wid, false}} {
    if (dsp::isTextureWindow(window)) mask_.emplace(noise, shape, window);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        Source& source = sources_[i];
        if ((wanted & (1u << i)) == 0) source.field = nullptr;
        if (source.field == nullptr || !source.texture) continue;
        rows_[i].assign(static_cast<std::size_t>(shape.ngates), 0.0f);
        if (mask_) textures_[i] = std::make_unique<dsp::FieldTexture>(*source.field, *mask_);
    }
}

unsigned ScanInputs::present() const {
    unsigned inputs = 0;
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (sources_[i].field != nullptr) inputs |= 1u << i;
    }
    return inputs;
}

void ScanInputs::moveTo(int ray) {
    if (mask_) mask_->moveTo(ray);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (textures_[i] != nullptr) textures_[i]->computeRow(rows_[i].data());
    }
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (sources_[i].field == nullptr) continue;
        inputs_[i] = sources_[i].texture ? rows_[i].data() : sources_[i].field->row(ray);
    }
}

}  // namespace clutter::driver
