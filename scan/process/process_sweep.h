/* process_sweep.h - one sweep through the library's processing chain. */
#ifndef SCAN_PROCESS_PROCESS_SWEEP_H
#define SCAN_PROCESS_PROCESS_SWEEP_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/classes/classify_sweep.h"

class Crres;

namespace scan {

/* The stages of the chain. */
constexpr int kClassifyStage = 1;
constexpr int kOffsetStage = 2;
constexpr int kSmoothStage = 4;
constexpr int kAttenuationStage = 8;
constexpr int kRainStage = 16;
constexpr int kRainToReflectivityStage = 32;
constexpr int kReflectivityToRainStage = 64;
constexpr int kBlankStage = 128;
constexpr int kAllStages = 255;

struct ProcessOptions {
    ClassifyOptions classify;              // its mask: only when the settings name one
    std::string configuration;             // file of settings; empty: the library's defaults
    int what = kAllStages;                 // stages that are wanted
    std::optional<double> freezingLevelM;  // above the antenna; none: that of the settings
    std::uint32_t seed = 1;                // of the search for attenuation coefficients
};

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

/* What a field of a processed sweep is called in Universal Format; null where that format cannot
 * hold it. */
const char* ufNameOf(const std::string& recordName);

}  // namespace scan

#endif
