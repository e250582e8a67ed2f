#include "driver/scan_classifier.h"

#include <algorithm>
#include <cstddef>

#include "driver/gate_kernels.h"

namespace clutter::driver {
namespace {

// Gates are classified in runs of whole blocks. A few noise gates in between cost less than
// gathering or a new run would; longer gaps are skipped.
constexpr int kBlock = 32;
constexpr int kLongestGap = 3 * kBlock;
constexpr std::size_t kManyEchoes = 4096;  // from here on, tables for quick verdicts pay

struct Run {
    int start;
    int end;
};

/* The next run at or after a gate; empty when there is none. */
Run nextRun(const float* noise, int ngates, int from) {
    Run run{ngates, ngates};
    for (int g = from; g < ngates; g += kBlock) {
        const int end = std::min(g + kBlock, ngates);
        if (countEchoes(noise + g, end - g) > 0) {
            if (run.start == ngates) run.start = g;
            run.end = end;
        } else if (run.start < ngates && g - run.end >= kLongestGap) {
            return run;
        }
    }
    return run;
}

}  // namespace

ScanClassifier::ScanClassifier(const ScanFields& fields, short mask, dsp::RowSource& noise,
                               dsp::PolarShape shape, dsp::Window window)
    : noise_(noise),
      shape_(shape),
      sources_{{fields.zhh, true},  {fields.zdr, true},  {fields.pdp, true},
               {fields.rhv, true},  {fields.vel, false}, {fields.ldr, false},
               {fields.pdf, false}, {fields.rhv, false}, {fields.wid, false}},
      verdicts_(static_cast<std::size_t>(shape.ngates), fuzzy::kPrecipitation) {
    if (dsp::isTextureWindow(window)) mask_.emplace(noise, shape, window);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        InputSource& source = sources_[i];
        if ((mask & (1 << i)) == 0) source.field = nullptr;
        if (source.field == nullptr || !source.texture) continue;
        rows_[i].assign(static_cast<std::size_t>(shape.ngates), 0.0f);
        if (mask_) textures_[i] = std::make_unique<dsp::FieldTexture>(*source.field, *mask_);
    }
}

bool ScanClassifier::prepare(const std::string& directory, std::size_t echoes) {
    float present = 0.0f;  // only whether an array is null counts here
    float* arrays[fuzzy::kInputCount] = {};
    bool any = false;
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if (sources_[i].field == nullptr) continue;
        arrays[i] = &present;
        any = true;
    }
    if (!any || echoes == 0) return false;
    const fuzzy::PrecipitationClutterEngine engine(directory.c_str(), arrays);
    rules_ = std::make_unique<fuzzy::RuleBase>(engine);
    if (!rules_->announceComplete()) return false;
    if (echoes >= kManyEchoes) rules_->prepareForMany();
    return true;
}

void ScanClassifier::classifyRay(int ray, float* classes) {
    const int ngates = shape_.ngates;
    prepareInputs(ray);
    const float* noise = noise_.row(ray);
    for (Run run = nextRun(noise, ngates, 0); run.start < ngates;
         run = nextRun(noise, ngates, run.end)) {
        const float* inputs[fuzzy::kInputCount] = {};
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if (inputs_[i] != nullptr) inputs[i] = inputs_[i] + run.start;
        }
        rules_->classify(inputs, run.end - run.start, verdicts_.data() + run.start);
    }
    applyVerdicts(noise, verdicts_.data(), classes, ngates);
}

void ScanClassifier::prepareInputs(int ray) {
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
