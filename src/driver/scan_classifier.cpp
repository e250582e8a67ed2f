/*
 * Fuzzy verdicts of a scan, in runs of gates that hold echoes.
 */
#include "driver/scan_classifier.h"

#include <cstddef>

#include "driver/gate_kernels.h"
#include "fuzzy/classifiers/precipitation_clutter.h"

namespace clutter::driver {
std::optional<fuzzy::RuleBase> readRules(const std::string& directory, unsigned inputs,
                                         std::size_t echoes) {
    if (inputs == 0 || echoes == 0) {
        return std::nullopt;
    }
    float present = 0.0f;  // only whether an array is null counts here
    float* arrays[fuzzy::kInputCount] = {};
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((inputs & (1u << i)) != 0) {
            arrays[i] = &present;
        }
    }
    const fuzzy::PrecipitationClutterEngine engine(directory.c_str(), arrays);
    fuzzy::RuleBase rules(engine);
    if (!rules.announceComplete()) {
        return std::nullopt;
    }
    if (echoes >= std::size_t{fuzzy::RuleBase::kMinMany}) {
        rules.prepareForMany();
    }
    return rules;
}

ScanClassifier::ScanClassifier(ScanInputs& inputs, const fuzzy::RuleBase& rules)
    : inputs_(inputs),
      rules_(rules),
      undecided_(rules.inputCount()),
      verdicts_(static_cast<std::size_t>(inputs.shape().ngates), fuzzy::kPrecipitation) {}

void ScanClassifier::classifyRay(int ray, float* classes) {
    const int ngates = inputs_.shape().ngates;
    inputs_.moveTo(ray);
    const float* noise = inputs_.noise(ray);
    for (GateRun run = nextRun(noise, ngates, 0); run.start < ngates;
         run = nextRun(noise, ngates, run.end)) {
        const float* inputs[fuzzy::kInputCount] = {};
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            if (inputs_.row(i) != nullptr) {
                inputs[i] = inputs_.row(i) + run.start;
            }
        }
        rules_.classify(inputs, run.end - run.start, verdicts_.data() + run.start, undecided_);
    }
    applyVerdicts(noise, verdicts_.data(), classes, ngates);
}

}  // namespace clutter::driver
