/* plan.h - what a classification of a sweep will use: fields, inputs, calibration. */
#ifndef SCAN_CLASSES_PLAN_H
#define SCAN_CLASSES_PLAN_H

#include <optional>
#include <string>
#include <vector>

#include "scan/classes/inputs.h"
#include "scan/fields/field_choice.h"
#include "scan/fields/field_map.h"
#include "scan/noise/noise_floor.h"
#include "scan/scan.h"

namespace scan {

/* A window of gates x rays, both odd; both 0: none. */
struct Window {
    int gates = 0, rays = 0;
};

struct ClassifyOptions {
    std::string membership;   // directory of the membership functions
    std::optional<int> mask;  // inputs that were asked for; none: all that the sweep has
    GivenNoise noise;
    NoiseEstimates* estimates = nullptr;  // of the scan; null: made for the one sweep anew
    int textureGates = 5;
    int textureRays = 3;
    Window neighbourhood = {5, 3};  // over which the textures' verdict is averaged
    bool certainty = false;         // also the probability of precipitation and the margin
    bool removeIsolated = false;
    bool allClasses = false;  // distinguish sea and wind-turbine clutter from ground clutter
    FieldMap map;
};

struct ClassificationPlan {
    FieldChoice fields;  // points into the sweep
    int mask = 0;        // inputs that take part
    NoiseFloor noiseFloor;
    std::vector<std::string> notes;
    std::vector<std::string> warnings;  // why the result may be wrong
};

/* Throws ScanError with the reason when the sweep cannot be classified. */
ClassificationPlan planClassification(const Scan& scan, const Sweep& sweep,
                                      const ClassifyOptions& options);

/* Of any processing: a gate spacing and a reflectivity. Throws ScanError. */
void requireReflectivity(const Sweep& sweep, const FieldChoice& fields);

}  // namespace scan

#endif
