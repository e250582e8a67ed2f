/* fill_phase.h - gaps in the differential phase. */
#ifndef SCAN_PROCESS_FILL_PHASE_H
#define SCAN_PROCESS_FILL_PHASE_H

#include <vector>

namespace scan {

/* What was done about the rays that had no phase at all. */
struct EmptyRays {
    std::vector<int> rays;
    float phase = 0;  // what they hold now
};

/*
 * Closes the gaps (NaN and infinities) of a scan's rays: linearly between the neighbours that have
 * a value, with the nearest one at the ends. A ray without any takes the median of the others'
 * first values, so that the mean offset of the scan stays about what it is; 0 where no ray has one.
 */
EmptyRays fillPhaseGaps(float* phase, int nrays, int ngates);

}  // namespace scan

#endif
