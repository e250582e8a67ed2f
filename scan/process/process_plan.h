/* process_plan.h - which stages of the chain can run on a sweep. */
#ifndef SCAN_PROCESS_PROCESS_PLAN_H
#define SCAN_PROCESS_PROCESS_PLAN_H

#include "scan/process/process_options.h"

namespace scan {

struct ProcessPlan {
    int what = 0;                       // stages that will run
    const Field* classField = nullptr;  // classes of the sweep, used where it is not classified
    ClassificationPlan classification;  // without the first stage: fields and notes only
};

/* Stages that lack an input are left out, and noted. Throws std::runtime_error. */
ProcessPlan planProcessing(const Scan& scan, const Sweep& sweep, const ProcessOptions& options,
                           int rainRelation);

}  // namespace scan

#endif
