/* process_options.h - which stages of the processing chain are wanted, and how they run. */
#ifndef SCAN_PROCESS_PROCESS_OPTIONS_H
#define SCAN_PROCESS_PROCESS_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>

#include "scan/classes/classify_sweep.h"

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

}  // namespace scan

#endif
