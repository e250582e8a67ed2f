/* nexrad_sweep.h - radials of one elevation as a sweep. */
#ifndef SCAN_FORMATS_NEXRAD_NEXRAD_SWEEP_H
#define SCAN_FORMATS_NEXRAD_NEXRAD_SWEEP_H

#include <optional>
#include <span>

#include "scan/formats/nexrad/nexrad_radial.h"
#include "scan/formats/reading/value_budget.h"
#include "scan/scan.h"

namespace scan::nexrad {

/*
 * Rays stay in the order of time. Moments may differ in their gates: the finest gates are taken,
 * and a value of a coarser moment is repeated in each gate that it covers (a sentence says so).
 * Code 0, below the threshold, is the field's noEcho; code 1, range folded, is NaN. Throws
 * std::runtime_error if the sweep is larger than the budget, or holds no moments.
 */
Sweep sweepOf(std::span<const Radial> radials, std::optional<double> fixedAngleDeg,
              ValueBudget& budget, std::string& oddity);

}  // namespace scan::nexrad

#endif
