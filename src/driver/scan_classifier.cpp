#include "driver/scan_classifier.h"

#include <algorithm>
#include <cstddef>

#include "driver/gate_kernels.h"

namespace clutter::driver {
namespace {

// Gates are classified in runs of whole blocks: a block without an echo is skipped, and the few
// noise gates of the others cost less than gathering would.
constexpr int kBlock = 32;
constexpr std::size_t kManyEchoes = 4096;  // from here on, tables for quick verdicts pay

/* The end of the run of blocks with echoes that starts at or after gate; start becomes its first
 * gate.
 */
int nextRun(const float* noise, int ngates, int& start) {
    const auto hasEcho = [noise, ngates](int g) {
        return countEchoes(noise + g, std::min(kBlock, ngates - g)) > 0;
    };
    while (start < ngates && !hasEcho(start)) start += kBlock;
    int end = start;
    while (end < ngates && hasEcho(end)) end += kBlock;
    return std::min(end, ngates);
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
    for (int start = 0; start < ngates;) {
        const int end = nextRun(noise, ngates, start);
        if (end <= start) break;
        const float* inputs[fuzzy::kInputCount] = {};
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if (inputs_[i] != nullptr) inputs[i] = inputs_[i] + start;
        }
        rules_->classify(inputs, end - start, verdicts_.data() + start);
        start = end;
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
