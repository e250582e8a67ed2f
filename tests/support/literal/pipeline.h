/*
 * pipeline.h - the plain, slow definitions of the stages that work on a whole scan: one
 * value at a time, in the order of the formulas, with nothing precomputed or skipped.
 */
#ifndef TESTS_SUPPORT_LITERAL_PIPELINE_H
#define TESTS_SUPPORT_LITERAL_PIPELINE_H

#include <string>
#include <vector>

namespace literal {

using Field = std::vector<float>;

/* A scan of equally sized fields and what the stages make of it. */
struct PolarScan {
    int ngates = 0, nrays = 0;
    float gateSize = 250.0f;
    float elevation = 0.0f;  // radians
    float radarConstant = 40.0f;
    Field zhh, zdr, pdp, rhv, vel, wid, ldr, pdf, fzl, ccl, rain;
    Field dpdp, acoef, bcoef, alpha, ta, pdpc, ah, kdp;

    std::size_t cells() const { return zhh.size(); }
};

struct PipelineSettings {
    int clutterInputs = 255;
    float minSnr = 26.0f, zdrBias = 0.0f, hidden = -999.0f;
    int windows[7][2] = {{7, 1}, {7, 1}, {17, 1}, {0, 0}, {0, 0}, {0, 0}, {0, 0}};
    int attenuation = 4;  // one of the algorithms without a search
    double leastRise = 20.0;
    int relation = 0;
};

/* Returns what is printed. */
std::string correctAttenuation(PolarScan& scan, const PipelineSettings& settings);

/* With the default coefficients. relation below 0: the hybrid of 0 and 1. */
void estimateRain(PolarScan& scan, int relation);

/* Everything except the conversions. Returns what attenuation correction prints. */
std::string process(PolarScan& scan, const PipelineSettings& settings,
                    const std::string& membershipDirectory);

}  // namespace literal

#endif
