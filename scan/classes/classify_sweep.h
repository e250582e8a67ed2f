/* classify_sweep.h - one sweep through the library's classifier. */
#ifndef SCAN_CLASSES_CLASSIFY_SWEEP_H
#define SCAN_CLASSES_CLASSIFY_SWEEP_H

#include <vector>

#include "clutterclassifier/classifier.h"
#include "scan/classes/plan.h"
#include "scan/scan.h"

namespace scan {

/* The classes, and the plan that they were made by. */
struct ClassifiedSweep : ClassificationPlan {
    std::vector<float> classes;      // nrays x ngates; NaN past the end of a ray
    std::vector<float> probability;  // of precipitation, with ClassifyOptions::certainty; NaN where
                                     // the gate is noise
    std::vector<float> margin;       // logarithm of the ratio of the strengths of both classes
    std::vector<float> deciding;  // index of the input that decided, or CLUTTER_BY_NEIGHBOURHOOD;
                                  // NaN where nothing did
    long precipitation = 0, groundClutter = 0, noise = 0;
    long seaClutter = 0, turbineClutter = 0;
    long withoutValue = 0;  // of the noise: gates without a reflectivity
    double seconds = 0;     // classification alone
    [[nodiscard]] long gates() const {
        return precipitation + groundClutter + seaClutter + turbineClutter + noise;
    }
};

/* Throws std::runtime_error with the reason when the sweep cannot be classified: then there are no
 * classes. */
ClassifiedSweep classifySweep(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options);

/* The classes of a sweep whose plan is made, into result. */
void classifyByPlan(const Sweep& sweep, const ClassifyOptions& options, ClassifiedSweep& result);

/* Counts the classes of result; gates past the end of a ray lose theirs. */
void countClasses(const Sweep& sweep, ClassifiedSweep& result);

/* Why one gate has its class: its inputs, their degrees and contributions, the neighbourhood's
 * share. The classes are those of classifySweep() before isolated gates are removed. Throws
 * std::runtime_error. */
struct ExplainedGate {
    ClassificationPlan plan;
    clutter_explanation explanation;
};
ExplainedGate explainGate(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          int ray, int gate);

/* The probability and the margin as fields of the sweep; none where they were not asked for. */
std::vector<Field> certaintyFields(const ClassifiedSweep& result);

}  // namespace scan

#endif
