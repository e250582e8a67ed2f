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
            if (run.start == ngates) {
                run.start = g;
            }
            run.end = end;
        } else if (run.start < ngates && g - run.end >= kMaxGap) {
            return run;
        }
    }
    return run;
}

ScanInputs::ScanInputs(const ScanFields& fields, unsigned wanted, dsp::RowSource& noise,
                       dsp::PolarShape shape, dsp::Window window)
    : noise_(noise), shape_(shape) {
    if (dsp::isTextureWindow(window)) {
        mask_.emplace(noise, shape, window);
    }
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((wanted & (1u << i)) != 0) {
            sources_[i] = fields[fuzzy::kInputs[i].field];
        }
        if (sources_[i] == nullptr || !fuzzy::kInputs[i].texture) {
            continue;
        }
        rows_[i].assign(static_cast<std::size_t>(shape.ngates), 0.0f);
        if (mask_) {
            textures_[i] = std::make_unique<dsp::FieldTexture>(*sources_[i], *mask_);
        }
    }
}

unsigned ScanInputs::present() const {
    unsigned inputs = 0;
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (sources_[i] != nullptr) {
            inputs |= 1u << i;
        }
    }
    return inputs;
}

void ScanInputs::moveTo(int ray) {
    if (mask_) {
        mask_->moveTo(ray);
    }
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (textures_[i] != nullptr) {
            textures_[i]->computeRow(rows_[i].data());
        }
    }
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (sources_[i] == nullptr) {
            continue;
        }
        inputs_[i] = fuzzy::kInputs[i].texture ? rows_[i].data() : sources_[i]->row(ray);
    }
}

}  // namespace clutter::driver
