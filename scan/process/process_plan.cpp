/* process_plan.cpp - leaves out the stages that lack an input. */
#include "scan/process/process_plan.h"

#include <algorithm>

#include "scan/class_codes.h"

namespace scan {
namespace {

const Field* findClassField(const Sweep& sweep) {
    const auto found = std::find_if(sweep.fields.begin(), sweep.fields.end(), isClassField);
    return found == sweep.fields.end() ? nullptr : &*found;
}

ClassificationPlan chooseOnly(const Sweep& sweep, const ProcessOptions& options) {
    ClassificationPlan plan;
    plan.fields = chooseFields(sweep, options.classify.map);
    requireReflectivity(sweep, plan.fields);
    return plan;
}

/* Whether the relation has its inputs: the stage hands on no specific differential phase. */
bool canEstimateRain(int relation, const FieldChoice& fields) {
    const bool takesZdr = relation < 0 || relation == 1 || relation == 4;
    return relation == 0 || (takesZdr && fields[Role::kZdr]);
}

void leaveOut(ProcessPlan& plan, int stages, const std::string& note) {
    if (plan.what & stages) {
        plan.classification.notes.push_back(note);
    }
    plan.what &= ~stages;
}

}  // namespace

ProcessPlan planProcessing(const Scan& scan, const Sweep& sweep, const ProcessOptions& options,
                           int rainRelation) {
    ProcessPlan plan;
    plan.what = options.what;
    const bool classifies = (plan.what & kClassifyStage) != 0;
    plan.classField = classifies ? nullptr : findClassField(sweep);
    plan.classification =
        classifies ? planClassification(scan, sweep, options.classify) : chooseOnly(sweep, options);
    const FieldChoice& fields = plan.classification.fields;
    if (!classifies && !plan.classField) {
        leaveOut(plan, kSmoothStage | kAttenuationStage | kBlankStage,
                 "no smoothing, attenuation or blanking: there are no classes");
    }
    if (!fields[Role::kPdp] || !fields[Role::kRhv]) {
        leaveOut(plan, kAttenuationStage, "no attenuation correction: it needs pdp and rhv");
    }
    if (!fields[Role::kZdr]) {
        leaveOut(plan, kOffsetStage, "no offset of zdr: there is no zdr");
    }
    if (!canEstimateRain(rainRelation, fields)) {
        leaveOut(
            plan, kRainStage,
            "no rain rate: relation " + std::to_string(rainRelation) + " lacks some of its inputs");
    }
    if (!(plan.what & kRainStage)) {
        leaveOut(plan, kRainToReflectivityStage,
                 "no reflectivity from rain rate: there is no rain rate");
    }
    return plan;
}

}  // namespace scan
