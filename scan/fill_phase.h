/* fill_phase.h - gaps in the differential phase. */
#ifndef SCAN_FILL_PHASE_H
#define SCAN_FILL_PHASE_H

namespace scan {

/*
 * Closes the gaps (NaN and infinities) of one ray: linearly between the neighbours that have a
 * value, with the nearest one at the ends, with 0 where there is none at all, which returns false.
 */
bool fillPhaseGaps(float* phase, int ngates);

}  // namespace scan

#endif
