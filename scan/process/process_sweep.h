/* process_sweep.h - one sweep through the library's processing chain. */
#ifndef SCAN_PROCESS_PROCESS_SWEEP_H
#define SCAN_PROCESS_PROCESS_SWEEP_H

#include <cstdint>
#include <memory>
#include <optional>

#include "scan/classes/classify_sweep.h"
#include "scan/process/process_options.h"
#include "scan/scan.h"

class Crres;

namespace scan {

struct ProcessedSweep {
    ClassifiedSweep classified;  // of a sweep that was not classified: fields and notes only
    int what = 0;                // stages that ran
    bool hasClasses = false;
    double freezingLevelM = 0;
    std::optional<std::uint32_t> seed;  // set when attenuation coefficients were searched
    Sweep sweep;  // the fields after the chain, by their record names; NaN is no value
    std::unique_ptr<Crres> context;  // its records too hold NaN where these fields do
};

/*
 * Stages that lack an input, or that would only spread zeros, are left out, and noted. The phase
 * is classified as it is; its gaps are closed before the other stages. Throws std::runtime_error
 * with the reason when the sweep cannot be processed.
 */
ProcessedSweep processSweep(const Scan& scan, const Sweep& sweep, const ProcessOptions& options);

}  // namespace scan

#endif
