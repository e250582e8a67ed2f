/* classify_sweep.cpp - hands the fields of a sweep to the library's classifier and keeps its
 * results. */
#include "scan/classes/classify_sweep.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "clutterclassifier/classifier.hpp"
#include "scan/class_codes.h"
#include "scan/classes/remove_isolated.h"
#include "scan/fields/missing.h"
#include "scan/fields/oddities.h"
#include "scan/scan.h"

namespace scan {
namespace {

/* The fields that take part. Gates without a value hold what means "nothing known" there. */
class Fields {
  public:
    Fields(const Sweep& sweep, const ClassificationPlan& plan)
        : scan_(static_cast<std::size_t>(sweep.nrays), static_cast<std::size_t>(sweep.ngates)) {
        for (int i = 0; i < kRoleCount; ++i) {
            const auto role = static_cast<Role>(i);
            if (plan.fields[role] && takesPart(role, plan.mask)) {
                take(role, plan.fields[role]->values);
            }
        }
        hideNoise(sweep, plan);
        scan_.noise(static_cast<double>(static_cast<float>(sweep.gateSpacingM)),
                    plan.noiseFloor.radarConstantDb,
                    plan.noiseFloor.snr ? kEveryValue : plan.noiseFloor.minSnrDb);
    }

    [[nodiscard]] const clutter_scan& scan() const { return scan_.c; }

  private:
    void hide(Role role, const std::vector<std::uint8_t>& gates) {
        std::vector<float>& values = filled_[static_cast<int>(role)];
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = gates[i] ? fillValue(role) : values[i];
        }
    }

    /* A field of signal-to-noise ratios decides gate by gate. Of a weak echo, the noise makes the
     * polarimetric quantities as rough as those of clutter. */
    void hideNoise(const Sweep& sweep, const ClassificationPlan& plan) {
        const NoiseFloor& noise = plan.noiseFloor;
        const Field& reflectivity = *plan.fields[Role::kZhh];
        if (noise.polarimetricSnrDb > noise.minSnrDb) {
            const std::vector<std::uint8_t> weak =
                gatesBelow(noise.polarimetricSnrDb, noise, sweep, reflectivity);
            for (Role role : {Role::kZdr, Role::kPdp, Role::kRhv}) {
                hide(role, weak);
            }
        }
        if (noise.snr) {
            hide(Role::kZhh, gatesBelow(noise.minSnrDb, noise, sweep, reflectivity));
        }
    }

    void take(Role role, const std::vector<float>& values) {
        std::vector<float>& filled = filled_[static_cast<int>(role)];
        filled = values;
        replaceMissing(role, filled);
        switch (role) {
            case Role::kZhh:
                scan_.zhh(filled);
                break;
            case Role::kZdr:
                scan_.zdr(filled);
                break;
            case Role::kPdp:
                scan_.phidp(filled);
                break;
            case Role::kRhv:
                scan_.rhohv(filled);
                break;
            case Role::kVel:
                scan_.velocity(filled);
                break;
            case Role::kWid:
                scan_.width(filled);
                break;
            case Role::kLdr:
                scan_.ldr(filled);
                break;
            case Role::kPdf:
                scan_.likelihood(filled);
                break;
            case Role::kKdp:
            case Role::kSnr:
            case Role::kNone:
                break;
        }
    }

    clutter::Scan scan_;
    std::vector<float> filled_[kRoleCount];
};

clutter::Classifier openClassifier(const ClassifyOptions& options, int mask) {
    return clutter::Classifier(options.membership, static_cast<std::uint32_t>(mask),
                               options.allClasses ? CLUTTER_WITH_ALL_CLUTTER : 0);
}

clutter_options libraryOptions(const Sweep& sweep, const ClassifyOptions& options, int mask) {
    clutter_options given = {};
    given.size = sizeof given;
    given.inputs = static_cast<std::uint32_t>(mask);
    given.texture_gates = options.textureGates;
    given.texture_rays = options.textureRays;
    given.neighbourhood_gates = options.neighbourhood.gates;
    given.neighbourhood_rays = options.neighbourhood.rays;
    given.sector = closesCircle(sweep) ? 0 : 1;
    given.all_clutter = options.allClasses ? 1 : 0;
    return given;
}

/* Where a file distinguishes gates without an echo from gates that were not measured, the latter
 * have no class. */
bool wasNotMeasured(const Field& reflectivity, std::size_t i) {
    return !reflectivity.noEchoGates.empty() && reflectivity.noEchoGates[i] == 0 &&
           std::isnan(reflectivity.values[i]);
}

bool knowsNoEcho(const Field& reflectivity) {
    return std::any_of(reflectivity.noEchoGates.begin(), reflectivity.noEchoGates.end(),
                       [](std::uint8_t gate) { return gate != 0; });
}

bool isPastRay(const Sweep& sweep, std::size_t i) {
    const auto ngates = static_cast<std::size_t>(sweep.ngates);
    return !sweep.rayGates.empty() && static_cast<int>(i % ngates) >= sweep.rayGates[i / ngates];
}

/* Gates past the end of a ray, or that were not measured, have no class. */
void hideUnmeasured(const Sweep& sweep, const Field& reflectivity, std::vector<float>& classes) {
    const bool apart = knowsNoEcho(reflectivity);
    if (!apart && sweep.rayGates.empty()) {
        return;
    }
    for (std::size_t i = 0; i < classes.size(); ++i) {
        if (isPastRay(sweep, i) || (apart && wasNotMeasured(reflectivity, i))) {
            classes[i] = kNoValue;
        }
    }
}

}  // namespace

void countClasses(const Sweep& sweep, ClassifiedSweep& result) {
    const Field& reflectivity = *result.fields[Role::kZhh];
    hideUnmeasured(sweep, reflectivity, result.classes);
    const std::vector<float>& classes = result.classes;
    const auto count = [&](float code) { return std::count(classes.begin(), classes.end(), code); };
    result.precipitation += count(kPrecipitation);
    result.groundClutter += count(kGroundClutter);
    result.seaClutter += count(kSeaClutter);
    result.turbineClutter += count(kTurbineClutter);
    result.noise += count(kNoise);
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const int classified = std::isnan(classes[i]) ? 0 : 1;
        const int missing = isMissing(Role::kZhh, reflectivity.values[i]) ? 1 : 0;
        result.withoutValue += classified & missing;
    }
}

void classifyByPlan(const Sweep& sweep, const ClassifyOptions& options, ClassifiedSweep& result) {
    const Fields fields(sweep, result);
    const std::size_t cells = result.fields[Role::kZhh]->values.size();
    std::vector<std::uint8_t> codes(cells), deciding;
    clutter_result wanted = {};
    wanted.size = sizeof wanted;
    wanted.classes = codes.data();
    if (options.certainty) {
        result.probability.resize(cells);
        result.margin.resize(cells);
        wanted.probability = result.probability.data();
        wanted.margin = result.margin.data();
        deciding.resize(cells);
        wanted.deciding = deciding.data();
    }
    const auto begin = std::chrono::steady_clock::now();
    openClassifier(options, result.mask)
        .classify(fields.scan(), libraryOptions(sweep, options, result.mask), wanted);
    result.classes.assign(codes.begin(), codes.end());
    result.deciding.assign(deciding.begin(), deciding.end());
    std::replace(result.deciding.begin(), result.deciding.end(), float{CLUTTER_BY_NONE}, kNoValue);
    if (options.removeIsolated) {
        removeIsolated(sweep, result.classes);
    }
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    countClasses(sweep, result);
}

ClassifiedSweep classifySweep(const Scan& scan, const Sweep& sweep,
                              const ClassifyOptions& options) {
    ClassifiedSweep result;
    static_cast<ClassificationPlan&>(result) = planClassification(scan, sweep, options);
    classifyByPlan(sweep, options, result);
    return result;
}

ExplainedGate explainGate(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          int ray, int gate) {
    ExplainedGate result{planClassification(scan, sweep, options), {}};
    const Fields fields(sweep, result.plan);
    result.explanation =
        openClassifier(options, result.plan.mask)
            .explain(fields.scan(), libraryOptions(sweep, options, result.plan.mask), ray, gate);
    return result;
}

std::vector<Field> certaintyFields(const ClassifiedSweep& result) {
    if (result.probability.empty()) {
        return {};
    }
    constexpr int kProbabilityPerUnit = 10000;
    constexpr int kMarginPerUnit = 100;
    constexpr float kMaxMargin = 300;  // an infinite one has no word, nor an end on a picture
    Field margin = {"MA", "", result.margin, kMarginPerUnit};
    for (float& value : margin.values) {
        value = std::isnan(value) ? value : std::clamp(value, -kMaxMargin, kMaxMargin);
    }
    return {{"PR", "", result.probability, kProbabilityPerUnit}, std::move(margin)};
}

}  // namespace scan
