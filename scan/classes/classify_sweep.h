/* classify_sweep.h - one sweep through the classification stage of the library. */
#ifndef SCAN_CLASSES_CLASSIFY_SWEEP_H
#define SCAN_CLASSES_CLASSIFY_SWEEP_H

#include <optional>
#include <string>
#include <vector>

#include "scan/classes/calibration.h"
#include "scan/fields/roles.h"
#include "scan/scan.h"

class Crres;

namespace scan {

struct ClassifyOptions {
    std::string membership;  /* directory with its trailing separator */
    std::optional<int> mask; /* inputs that were asked for; none: all that the sweep has */
    std::optional<double> minSnrDb;
    std::optional<double> radarConstantDb;
    int textureGates = 5;
    int textureRays = 3;
    bool removeIsolated = false;
    bool allClasses = false; /* tell sea and wind-turbine clutter from ground clutter */
    FieldMap map;
};

enum class ConstantSource { kUser, kFile, kEstimate };

struct ClassifiedSweep {
    std::vector<float> classes; /* nrays x ngates; NaN beyond the end of a ray */
    long precipitation = 0, groundClutter = 0, noise = 0;
    long seaClutter = 0, turbineClutter = 0;
    long withoutValue = 0; /* of the noise: gates without a reflectivity */
    double seconds = 0;    /* classification alone */
    int mask = 0;          /* inputs that took part */
    FieldChoice fields;    /* points into the sweep */
    ConstantSource source = ConstantSource::kUser;
    Calibration calibration;
    std::vector<std::string> notes;
    long gates() const {
        return precipitation + groundClutter + seaClutter + turbineClutter + noise;
    }
};

/* The fields, inputs and calibration of a sweep that is about to be classified. Throws
 * std::runtime_error with the reason when it cannot be. */
ClassifiedSweep prepareSweep(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options);

/* Takes the classes of a context and counts them. */
void takeClasses(const Sweep& sweep, const Crres& context, ClassifiedSweep& result);

/* Throws std::runtime_error with the reason when the sweep cannot be classified. */
ClassifiedSweep classifySweep(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options);

/* Whether the fields of a role take part: always for the reflectivity. */
bool takesPart(Role role, int mask);

/* Parses "zhh-texture,vel,...", "textures" or "all". Throws std::invalid_argument. */
int parseInputs(const std::string& text);

/* "textures of zhh zdr; vel": the other way round, to be read. */
std::string describeInputs(int mask);

}  // namespace scan

#endif
