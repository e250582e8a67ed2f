/* process_sweep.cpp - fills a processing context, runs its stages, takes the results. */
#include "scan/process/process_sweep.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "clutterclassifier/classifier.hpp"
#include "clutterclassifier/clutterclassifier.h"
#include "scan/class_codes.h"
#include "scan/process/fill_context.h"
#include "scan/process/fill_phase.h"
#include "scan/process/process_plan.h"
#include "scan/process/processed_fields.h"

namespace scan {
namespace {

constexpr int kMinReach = 5;

void readSettings(const ProcessOptions& options, Crres& context) {
    std::string file = options.configuration;
    if (!file.empty()) {
        context.readinitialconfiguration(file.data());
    }
    if (options.freezingLevelM) {
        context.freezinglevel = static_cast<float>(*options.freezingLevelM);
    }
}

/* Whether the attenuation stage draws its trials at random. */
bool searchesCoefficients(int algorithm) {
    return algorithm == 0 || algorithm == 1 || algorithm == 2 || algorithm == 8;
}

/* Half of the tallest window, in rays; some stages count the empty rays, so that a few are always
 * there. */
int reachOf(const Sweep& sweep, const Crres& context) {
    const int rays = std::max({context.rays2ave_zhh, context.rays2ave_zdr, context.rays2ave_pdp,
                               context.rays2ave_rhv, context.texrays});
    return std::max(std::min(rays / 2, sweep.nrays), kMinReach);
}

std::size_t cellsOf(const Crres& context) {
    return static_cast<std::size_t>(context.zhh.nrays) *
           static_cast<std::size_t>(context.zhh.ngates);
}

/* A record like the reflectivity's, with one value everywhere. */
void fillWith(float value, Crres& context, Cpluvek& record) {
    context.zhh.CopyPointerToObject(0, record);
    std::fill(record.data, record.data + cellsOf(context), value);
}

void fill(const Sweep& sweep, const ClassificationPlan& plan, Crres& context) {
    fillContext(sweep, plan.fields, reachOf(sweep, context), context);
    fillWith(context.freezinglevel, context, context.fzl);
    fillWith(0.0f, context, context.rain);
    context.zhh.radarconst = static_cast<float>(plan.noiseFloor.radarConstantDb);
    context.minsnr = static_cast<float>(plan.noiseFloor.minSnrDb);
}

/* Gates without a class count as noise. */
std::vector<float> withNoise(std::vector<float> classes) {
    std::replace_if(
        classes.begin(), classes.end(), [](float value) { return std::isnan(value); }, kNoise);
    return classes;
}

/* The classes in the context; rays beyond the sweep's own, and gates without a class, are noise. */
void putClasses(const std::vector<float>& classes, Crres& context) {
    fillWith(kNoise, context, context.ccl);
    const std::vector<float> whole = withNoise(classes);
    std::copy(whole.begin(), whole.end(), context.ccl.data);
    std::snprintf(context.ccl.name, sizeof context.ccl.name, "CCl");
    std::snprintf(context.ccl.units, sizeof context.ccl.units, "-");
}

void classify(const Sweep& sweep, const ProcessOptions& options, Crres& context,
              ClassifiedSweep& result) {
    ClassifyOptions classification = options.classify;
    classification.textureGates = context.texgates;
    classification.textureRays = context.texrays;
    classifyByPlan(sweep, classification, result);
    context.computeSNR();
}

void closePhaseGaps(const Sweep& sweep, Crres& context, std::vector<std::string>& notes) {
    const EmptyRays empty = fillPhaseGaps(context.pdp.data, context.pdp.nrays, sweep.ngates);
    const auto without = std::count_if(empty.rays.begin(), empty.rays.end(),
                                       [&](int ray) { return ray < sweep.nrays; });
    if (without == 0) {
        return;
    }
    char note[100];
    std::snprintf(note, sizeof note,
                  "%d rays have no phase; using the start phase of the others: %.1f deg",
                  static_cast<int>(without), static_cast<double>(empty.phase));
    notes.push_back(note);
}

}  // namespace

ProcessedSweep processSweep(const Scan& scan, const Sweep& sweep, const ProcessOptions& options) {
    ProcessedSweep out;
    out.context = std::make_unique<Crres>();
    Crres& context = *out.context;
    readSettings(options, context);
    ProcessPlan plan = planProcessing(scan, sweep, options, context.rainfallalg);
    ClassifiedSweep& classified = out.classified;
    static_cast<ClassificationPlan&>(classified) = std::move(plan.classification);
    out.what = plan.what;
    out.freezingLevelM = context.freezinglevel;
    if ((out.what & kAttenuationStage) != 0 && searchesCoefficients(context.attenuationalg)) {
        out.seed = options.seed;
    }
    const bool classifies = (out.what & kClassifyStage) != 0;
    out.hasClasses = classifies || plan.classField;
    fill(sweep, classified, context);

    const auto begin = std::chrono::steady_clock::now();
    if (classifies) {
        classify(sweep, options, context, classified);
    } else if (plan.classField) {
        classified.classes = withNoise(plan.classField->values);
        countClasses(sweep, classified);
    }
    if (out.hasClasses) {
        putClasses(classified.classes, context);
    }
    // A gap in the phase says nothing about clutter, so that it is closed after the classification
    // only. There, one gap would spoil the offset of the whole scan.
    if (context.pdp.data) {
        closePhaseGaps(sweep, context, classified.notes);
    }
    {
        const clutter::Seed seed(options.seed);
        context.RadarDataProcessing(out.what & ~kClassifyStage);
    }
    classified.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();

    static_cast<SweepGeometry&>(out.sweep) = sweep;
    out.sweep.fields = takeFields(sweep, classified.fields, out.what, context);
    if (out.hasClasses) {
        // Samples of the context hold no value where the files have none.
        std::copy(classified.classes.begin(), classified.classes.end(), context.ccl.data);
    }
    return out;
}

}  // namespace scan
