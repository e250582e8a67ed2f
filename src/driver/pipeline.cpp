/*
 * The processing pipeline: the stages of the context in their order, one bit each.
 */

#include "base/message.h"
#include "clutterclassifier/Crres.h"
#include "model/field_access.h"

using namespace clutter::model;

namespace {

enum Stage {
    kClassification = 1,
    kZdrCalibration = 2,
    kFiltering = 4,
    kAttenuation = 8,
    kRainfall = 16,
    kReflectivityFromRain = 32,
    kRainFromReflectivity = 64,
    kBlanking = 128
};

/* The plain conversions have a relation of their own, whatever is configured. */
constexpr float kRelationA = 200.0f;
constexpr float kRelationB = 1.6f;

void classify(Crres& c) {
    clutter::base::report("Clutter classification: ccl=%d, texture=%dx%d, minsnr=%2.1fdB\n",
                          c.clutteralg, c.texgates, c.texrays, static_cast<double>(c.minsnr));
    c.PrecipitationClutterClassification(c.clutteralg);
    c.RemoveIsolatedPixels();
}

void calibrate(Crres& c) {
    clutter::base::report("Zdr adjustment: zdr offset=%1.2f\n", static_cast<double>(c.zdrbias));
    c.CalibrateZdrOffsetandAzimuthVariation();
}

void filter(Crres& c) {
    clutter::base::report("Filtering: zhh=%dx%d zdr=%dx%d pdp=%dx%d\n", c.gates2ave_zhh,
                          c.rays2ave_zhh, c.gates2ave_zdr, c.rays2ave_zdr, c.gates2ave_pdp,
                          c.rays2ave_pdp);
    struct Filter {
        Cpluvek& field;
        int gates, rays;
        int decibels;
    };
    const Filter filters[] = {
        {c.zhh, c.gates2ave_zhh, c.rays2ave_zhh, 1}, {c.zdr, c.gates2ave_zdr, c.rays2ave_zdr, 1},
        {c.pdp, c.gates2ave_pdp, c.rays2ave_pdp, 0}, {c.rhv, c.gates2ave_rhv, c.rays2ave_rhv, 0},
        {c.vel, c.gates2ave_vel, c.rays2ave_vel, 0}, {c.wid, c.gates2ave_wid, c.rays2ave_wid, 0},
        {c.ldr, c.gates2ave_ldr, c.rays2ave_ldr, 0},
    };
    for (const Filter& f : filters) {
        c.dsp.Conv2DPPI(f.field.data, f.field.data, valuesOf(c.ccl, cells(f.field)), f.field.ngates,
                        f.field.nrays, f.gates, f.rays, f.decibels);
    }
}

void correctAttenuation(Crres& c) {
    clutter::base::report("Attenuation Correction: algorithm=%d, freezing level=%1.1fm\n",
                          c.attenuationalg, static_cast<double>(c.freezinglevel));
    c.AttenuationCorrection();
}

void estimateRain(Crres& c) {
    clutter::base::report("Rainfall Estimation\n");
    c.PrecipitationEstimation(c.rainfallalg);
}

/* One of the plain conversions, a ray at a time. */
void convert(Crres& c, void (Cradarpro::*conversion)(float*, float*, int, float, float)) {
    if (!holdAll({&c.zhh, &c.rain}, cells(c.zhh))) {
        return;
    }
    forEachRay(c.zhh, [&](std::ptrdiff_t at, int count) {
        (c.radarpro.*conversion)(c.rain.data + at, c.zhh.data + at, count, kRelationA, kRelationB);
    });
}

}  // namespace

int Crres::RadarDataProcessing(int what) {
    if (!holdAll({&zhh}, cells(zhh))) {
        return 0;
    }
    if (what & kClassification) {
        classify(*this);
    }
    if (what & kZdrCalibration) {
        calibrate(*this);
    }
    if (what & kFiltering) {
        filter(*this);
    }
    if (what & kAttenuation) {
        correctAttenuation(*this);
    }
    if (what & kRainfall) {
        estimateRain(*this);
    }
    if (what & kReflectivityFromRain) {
        convert(*this, &Cradarpro::RtoZ);
    }
    if (what & kRainFromReflectivity) {
        convert(*this, &Cradarpro::ZtoR);
    }
    if (what & kBlanking) {
        EliminateInvalidDataForDisplayPurposes();
    }
    return 1;
}
