#include "scan/noise/noise_floor.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace scan {
namespace {

constexpr double kMaxNoiseShare = 0.02;    // of the values, where the noise was removed
constexpr double kMinSnrCoverage = 0.5;    // of the reflectivity's gates, for a field of ratios
constexpr double kMaxSnrScatterDb = 8;     // middle half of its differences from the reflectivity
constexpr double kMinAgreeingShare = 0.4;  // of the rings: an estimate from fewer rests on little

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
    char text[300];
    va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

NoiseInput inputOf(const Sweep& sweep, const FieldChoice& fields) {
    const Field* correlation = fields[Role::kRhv];
    return {fields[Role::kZhh]->values,
            correlation ? &correlation->values : nullptr,
            sweep.nrays,
            sweep.ngates,
            sweep.gateSpacingM,
            sweep.rayGates.empty() ? nullptr : &sweep.rayGates};
}

/* Z - 20 log10(range in km) of every gate that holds a value, with the index of the gate. */
template <class Visit>
void visitLevels(const Sweep& sweep, const Field& reflectivity, Visit visit) {
    std::vector<double> spreading;
    for (int g = 0; g < sweep.ngates; ++g) {
        spreading.push_back(20 * std::log10(std::max(g, 1) * sweep.gateSpacingM / 1000));
    }
    for (std::size_t i = 0; i < reflectivity.values.size(); ++i) {
        const float value = reflectivity.values[i];
        if (std::isfinite(value) && value != kNoRainDbz) {
            visit(i, value - spreading[i % spreading.size()]);
        }
    }
}

/* Whether values are so seldom below 0 dB that the noise, half of which is, must have been removed.
 */
bool isNoiseRemoved(std::size_t below, std::size_t all) {
    return static_cast<double>(below) < kMaxNoiseShare * static_cast<double>(all);
}

/* Whether the format marks gates without echo, so that those with a value hold one. Where nearly
 * all far gates hold values nevertheless, these are noise. */
bool marksNoEcho(const Sweep& sweep, const FieldChoice& fields) {
    const Field& reflectivity = *fields[Role::kZhh];
    const std::vector<std::uint8_t>& marks = reflectivity.noEchoGates;
    const bool marked = std::any_of(marks.begin(), marks.end(), [](std::uint8_t m) { return m; });
    return (marked || reflectivity.leavesOutNoEcho) &&
           filledShareOutside(inputOf(sweep, fields)) < kNoiseFills;
}

/* Takes a field of ratios, unless it is not what its name says. */
bool takeSnrField(const Sweep& sweep, const FieldChoice& fields, NoiseFloor& noise) {
    const Field* snr = fields[Role::kSnr];
    if (!snr) {
        return false;
    }
    std::vector<double> differences;
    std::size_t gates = 0;
    std::size_t below = 0;
    visitLevels(sweep, *fields[Role::kZhh], [&](std::size_t i, double level) {
        ++gates;
        if (std::isfinite(snr->values[i])) {
            differences.push_back(snr->values[i] - level);
            below += snr->values[i] < 0;
        }
    });
    const auto known = static_cast<double>(differences.size());
    if (differences.empty() || known < kMinSnrCoverage * static_cast<double>(gates)) {
        noise.warnings.push_back(snr->name +
                                 " is left out: most gates with a reflectivity lack it");
        return false;
    }
    const double scatter = quantile(differences, 0.75) - quantile(differences, 0.25);
    if (!(scatter <= kMaxSnrScatterDb)) {
        noise.warnings.push_back(snr->name +
                                 " is left out: it does not follow the reflectivity as a "
                                 "signal-to-noise ratio does");
        return false;
    }
    noise.source = NoiseSource::kSnrField;
    noise.snr = snr;
    noise.radarConstantDb = quantile(std::move(differences), 0.5);
    noise.removed = isNoiseRemoved(below, gates);
    return true;
}

void takeConstant(const Sweep& sweep, const FieldChoice& fields, double constant,
                  NoiseFloor& noise) {
    std::size_t gates = 0;
    std::size_t below = 0;
    visitLevels(sweep, *fields[Role::kZhh], [&](std::size_t, double level) {
        ++gates;
        below += level + constant < 0;
    });
    noise.source = NoiseSource::kFile;
    noise.radarConstantDb = constant;
    noise.removed = isNoiseRemoved(below, gates);
}

void takeEstimate(const NoiseEstimate& estimate, NoiseFloor& noise) {
    noise.source = NoiseSource::kEstimate;
    noise.estimate = estimate;
    noise.radarConstantDb = estimate.radarConstantDb;
    noise.minSnrDb = estimate.minSnrDb;
    if (estimate.evidence != NoiseEvidence::kNoiseGates) {
        noise.warnings.push_back(
            "no noise was found and the file does not say what is noise: every value counts as "
            "echo (a calibration constant or a field of signal-to-noise ratios would help)");
    } else if (estimate.agreeingRings < kMinAgreeingShare * estimate.rings) {
        noise.minSnrDb = 0;
        noise.warnings.push_back(format(
            "the noise was found in %d of %d rings only: what exceeds it by 0 dB counts as echo (a "
            "calibration constant or a field of signal-to-noise ratios would help)",
            estimate.agreeingRings, estimate.rings));
    }
}

}  // namespace

const NoiseEstimate& NoiseEstimates::of(const Sweep& sweep, const FieldChoice& fields) {
    const std::pair key(sweep.gateSpacingM, fields[Role::kZhh]->name);
    const auto found = known_.find(key);
    return found != known_.end() ? found->second
                                 : known_.emplace(key, estimate(sweep, fields)).first->second;
}

NoiseEstimate NoiseEstimates::estimate(const Sweep& sweep, const FieldChoice& fields) const {
    std::vector<NoiseInput> inputs = {inputOf(sweep, fields)};
    for (const Sweep& other : scan_.sweeps) {
        if (&other == &sweep || other.gateSpacingM != sweep.gateSpacingM) {
            continue;
        }
        try {
            const FieldChoice choice = chooseFields(other, map_);
            const Field* reflectivity = choice[Role::kZhh];
            if (reflectivity && reflectivity->name == fields[Role::kZhh]->name) {
                inputs.push_back(inputOf(other, choice));
            }
        } catch (const std::runtime_error&) {
            continue;  // a sweep without the fields that the caller names has no say
        }
    }
    return estimateNoise(inputs);
}

NoiseFloor findNoiseFloor(const Scan& scan, const Sweep& sweep, const FieldChoice& fields,
                          const GivenNoise& given, NoiseEstimates& estimates) {
    NoiseFloor noise;
    noise.minSnrDb = kEchoSnrDb;
    if (given.radarConstantDb) {
        noise.radarConstantDb = *given.radarConstantDb;
    } else if (takeSnrField(sweep, fields, noise)) {
        noise.removed |= marksNoEcho(sweep, fields);
    } else if (scan.hasRadarConstant) {
        takeConstant(sweep, fields, scan.radarConstantDb, noise);
        noise.removed |= marksNoEcho(sweep, fields);
    } else if (marksNoEcho(sweep, fields)) {
        noise.source = NoiseSource::kFormat;
        noise.radarConstantDb = estimates.of(sweep, fields).radarConstantDb;
        noise.removed = true;
    } else {
        takeEstimate(estimates.of(sweep, fields), noise);
    }
    if (noise.removed) {
        noise.minSnrDb = kEveryValue;
    }
    if (noise.minSnrDb < kEchoSnrDb) {
        noise.polarimetricSnrDb = kEchoSnrDb;
    }
    noise.minSnrDb = given.minSnrDb.value_or(noise.minSnrDb);
    return noise;
}

std::vector<std::uint8_t> gatesBelow(double ratioDb, const NoiseFloor& noise, const Sweep& sweep,
                                     const Field& reflectivity) {
    std::vector<std::uint8_t> below(reflectivity.values.size());
    visitLevels(sweep, reflectivity, [&](std::size_t i, double level) {
        below[i] =
            noise.snr ? noise.snr->values[i] < ratioDb : level + noise.radarConstantDb < ratioDb;
    });
    return below;
}

std::string describeNoise(const NoiseFloor& noise) {
    constexpr char kRemoved[] = "; the noise was removed before";
    const char* removed = noise.removed ? kRemoved : "";
    switch (noise.source) {
        case NoiseSource::kGiven:
            return format("constant %.1f dB, as given", noise.radarConstantDb);
        case NoiseSource::kSnrField:
            return "field " + noise.snr->name + " of the file" + removed;
        case NoiseSource::kFile:
            return format("constant %.1f dB of the file%s", noise.radarConstantDb, removed);
        case NoiseSource::kFormat:
            return "marked in the file: gates without echo";
        case NoiseSource::kEstimate:
            break;
    }
    const NoiseEstimate& estimate = noise.estimate;
    switch (estimate.evidence) {
        case NoiseEvidence::kNoiseGates:
            return format(
                "estimated: constant %.1f dB from the noise in %d of %d rings of %d sweep%s",
                noise.radarConstantDb, estimate.agreeingRings, estimate.rings, estimate.sweeps,
                estimate.sweeps == 1 ? "" : "s");
        case NoiseEvidence::kLowerEnvelope:
            return format("none found in %d rings of %d sweep%s", estimate.rings, estimate.sweeps,
                          estimate.sweeps == 1 ? "" : "s");
        case NoiseEvidence::kNothing:
            return "unknown: too few values";
    }
    return "";
}

}  // namespace scan
