/*
 * scan_classifier.h - fuzzy verdicts of a scan, ray by ray, so that all that a ray needs stays in
 * the cache.
 */
#ifndef CLUTTER_DRIVER_SCAN_CLASSIFIER_H
#define CLUTTER_DRIVER_SCAN_CLASSIFIER_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "driver/scan_inputs.h"
#include "fuzzy/engine/engine.h"

namespace clutter::driver {

/*
 * Reads the membership files of inputs (bit i is input i of the fuzzy system) and gets ready to
 * classify that many gates. Nothing when there is nothing to classify with: no input or no echo
 * (silently), or a membership file that cannot be read (after the message).
 */
[[nodiscard]] std::optional<fuzzy::RuleBase> readRules(const std::string& directory,
                                                       unsigned inputs, std::size_t echoes);

/* Allocates in its constructor only. */
class ScanClassifier {
  public:
    /* Both must outlive the classifier. */
    ScanClassifier(ScanInputs& inputs, const fuzzy::RuleBase& rules);

    /* Writes the classes of the next ray, from ray 0 on. */
    void classifyRay(int ray, float* classes);

  private:
    ScanInputs& inputs_;
    const fuzzy::RuleBase& rules_;
    fuzzy::UndecidedElements undecided_;
    std::vector<float> verdicts_;
};

}  // namespace clutter::driver

#endif
