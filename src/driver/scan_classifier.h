/*
 * scan_classifier.h - textures and fuzzy verdicts of a scan, ray by ray, so that all that a ray
 * needs stays in the cache.
 */
#ifndef CLUTTER_DRIVER_SCAN_CLASSIFIER_H
#define CLUTTER_DRIVER_SCAN_CLASSIFIER_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dsp/windows/row_source.h"
#include "dsp/windows/texture.h"
#include "fuzzy/engine.h"
#include "fuzzy/precipitation_clutter.h"

namespace clutter::driver {

/* The fields of a scan; absent ones are null. */
struct ScanFields {
    dsp::RowSource* zhh = nullptr;
    dsp::RowSource* zdr = nullptr;
    dsp::RowSource* pdp = nullptr;
    dsp::RowSource* rhv = nullptr;
    dsp::RowSource* vel = nullptr;
    dsp::RowSource* ldr = nullptr;
    dsp::RowSource* pdf = nullptr;
    dsp::RowSource* wid = nullptr;
};

/* Where an input of the fuzzy system comes from: the values of a field, or its texture. */
struct InputSource {
    dsp::RowSource* field = nullptr;
    bool texture = false;
};

class ScanClassifier {
  public:
    /*
     * mask selects the inputs: bit i is input i of the fuzzy system. noise holds the noise class
     * where a gate is not to be classified, and must stay as it is until the last ray. A window
     * that the texture rejects gives textures of 0. All sources must outlive the classifier.
     */
    ScanClassifier(const ScanFields& fields, short mask, dsp::RowSource& noise,
                   dsp::PolarShape shape, dsp::Window window);

    /*
     * Reads the membership files and gets ready to classify that many gates. False when there is
     * nothing to classify with: no input (silently), or a membership file that cannot be read
     * (after the message).
     */
    bool prepare(const std::string& directory, std::size_t echoes);

    /* Writes the classes of the next ray, from ray 0 on. */
    void classifyRay(int ray, float* classes);

  private:
    void prepareInputs(int ray);

    dsp::RowSource& noise_;
    dsp::PolarShape shape_;
    InputSource sources_[fuzzy::kInputCount];
    std::optional<dsp::MaskWindow> mask_;
    std::unique_ptr<dsp::FieldTexture> textures_[fuzzy::kInputCount];
    std::vector<float> rows_[fuzzy::kInputCount];  // of textures
    const float* inputs_[fuzzy::kInputCount] = {};
    std::vector<float> verdicts_;
    std::unique_ptr<fuzzy::RuleBase> rules_;
};

}  // namespace clutter::driver

#endif
