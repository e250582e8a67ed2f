/* plan.cpp - chooses fields and inputs. */
#include "scan/classes/plan.h"

#include "scan/scan_error.h"

namespace scan {
namespace {

void planNoise(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
               ClassificationPlan& plan) {
    NoiseEstimates own(scan, options.map);
    plan.noiseFloor = findNoiseFloor(scan, sweep, plan.fields, options.noise,
                                     options.estimates ? *options.estimates : own);
    plan.warnings.insert(plan.warnings.end(), plan.noiseFloor.warnings.begin(),
                         plan.noiseFloor.warnings.end());
}

/* The inputs that were asked for, without a velocity that says nothing about clutter. */
int wantedInputs(const Sweep& sweep, const ClassifyOptions& options, ClassificationPlan& plan) {
    if (options.mask) {
        return *options.mask;
    }
    if (!isVelocityFiltered(sweep, plan.fields, options.map)) {
        return kDefaultInputs;
    }
    plan.notes.push_back("vel is left out: " + plan.fields[Role::kVel]->name +
                         " seems to be measured after the clutter filter (it is used where it is "
                         "asked for by name)");
    return kDefaultInputs & ~CLUTTER_VELOCITY;
}

/* The inputs that are wanted and exist. */
int planInputs(const Sweep& sweep, const ClassifyOptions& options, ClassificationPlan& plan) {
    const int wanted = wantedInputs(sweep, options, plan);
    std::string absent;
    int mask = 0;
    for (const Input& input : inputs()) {
        if ((wanted & input.bit()) == 0) {
            continue;
        }
        if (plan.fields[input.role]) {
            mask |= input.bit();
        } else {
            absent += std::string(" ") + input.info->name;
        }
    }
    if (mask == 0) {
        throw ScanError(Failure::kNoInputs, "has no field for any of the inputs" + absent);
    }
    if (options.mask && !absent.empty()) {
        plan.notes.push_back("asked for, but not in the file:" + absent);
    }
    return mask;
}

}  // namespace

void requireReflectivity(const Sweep& sweep, const FieldChoice& fields) {
    if (!(sweep.gateSpacingM > 0)) {
        throw std::runtime_error("the gate spacing is not positive");
    }
    if (!fields[Role::kZhh]) {
        throw ScanError(Failure::kNoReflectivity, "no reflectivity field is known or usable");
    }
}

ClassificationPlan planClassification(const Scan& scan, const Sweep& sweep,
                                      const ClassifyOptions& options) {
    ClassificationPlan plan;
    plan.fields = chooseFields(sweep, options.map);
    requireReflectivity(sweep, plan.fields);
    plan.mask = planInputs(sweep, options, plan);
    const int wanted = options.mask.value_or(kDefaultInputs);
    for (int i = 0; i < kRoleCount; ++i) {
        const std::string& note = plan.fields.notes[i];
        if (!note.empty() && takesPart(static_cast<Role>(i), wanted)) {
            plan.notes.push_back(note);
        }
    }
    planNoise(scan, sweep, options, plan);
    return plan;
}

}  // namespace scan
