/*
 * scan_context.h - whole scans for the stages: fields with rain, clutter, noise and attenuation,
 * and a context that holds them.
 */
#ifndef TESTS_SUPPORT_SCAN_CONTEXT_H
#define TESTS_SUPPORT_SCAN_CONTEXT_H

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "clutterclassifier/Crres.h"
#include "support/literal/pipeline.h"
#include "support/rain_ray.h"

namespace clutter::test {

inline void fillField(Cpluvek& record, int ngates, int nrays, const std::vector<float>& values,
                      float gateSize = 250.0f, float elevation = 0.0f) {
    delete[] record.data;
    delete[] record.angles;
    record.ngates = ngates;
    record.nrays = nrays;
    record.nrecords = 1;
    record.coordtype = 0;
    record.gatesize = gateSize;
    record.data = new float[values.size()];
    std::copy(values.begin(), values.end(), record.data);
    record.angles = new float[static_cast<std::size_t>(nrays) + 1];
    record.angles[0] = elevation;
    for (int r = 0; r < nrays; ++r) {
        record.angles[r + 1] = static_cast<float>(r) * 6.2831853f / static_cast<float>(nrays);
    }
}

inline std::vector<float> fieldOf(const Cpluvek& record) {
    if (record.data == nullptr) {
        return {};
    }
    return {record.data, record.data + record.ngates * record.nrays};
}

/* Fills the records of the fields that are not empty. */
inline void fillContext(Crres& c, const literal::PolarScan& scan) {
    const auto fill = [&](Cpluvek& record, const literal::Field& values) {
        if (values.empty()) {
            return;
        }
        fillField(record, scan.ngates, scan.nrays, values, scan.gateSize, scan.elevation);
    };
    fill(c.zhh, scan.zhh);
    fill(c.zdr, scan.zdr);
    fill(c.pdp, scan.pdp);
    fill(c.rhv, scan.rhv);
    fill(c.vel, scan.vel);
    fill(c.wid, scan.wid);
    fill(c.ldr, scan.ldr);
    fill(c.pdf, scan.pdf);
    fill(c.fzl, scan.fzl);
    fill(c.ccl, scan.ccl);
    fill(c.rain, scan.rain);
    c.zhh.radarconst = scan.radarConstant;
}

/* Rays of rain, attenuated, with blocks of clutter and of noise; freezing levels that the beam
 * reaches in most rays. All values are finite. */
inline literal::PolarScan makeRainScan(int nrays, int ngates, unsigned seed) {
    literal::PolarScan scan;
    scan.ngates = ngates;
    scan.nrays = nrays;
    scan.elevation = 0.02f;
    std::mt19937 random(seed);
    std::normal_distribution<float> normal;
    std::uniform_real_distribution<float> uniform;
    for (int r = 0; r < nrays; ++r) {
        const literal::AttenuationRay ray =
            makeRainRay(ngates, seed + static_cast<unsigned>(r), 0.3 + 1.2 * (r % 4) / 4.0, 0.02);
        const float freezing = r % 9 == 0 ? 90000.0f : 1500.0f + 1500.0f * uniform(random);
        float kind = 0.0f;
        for (std::size_t g = 0; g < ray.z.size(); ++g) {
            if (g % 25 == 0) {
                kind = g < 50 ? 0.0f : uniform(random);
            }
            const bool clutter = kind > 0.92f, noise = kind > 0.85f && !clutter;
            scan.zhh.push_back(noise     ? -45.0f
                               : clutter ? 40.0f + 9.0f * normal(random)
                                         : static_cast<float>(10.0 * std::log10(ray.z[g])));
            scan.zdr.push_back(0.8f + (clutter ? 3.0f : 0.3f) * normal(random));
            scan.pdp.push_back(static_cast<float>(ray.phidp[g]) +
                               (clutter ? 50.0f * normal(random) : 0.0f));
            scan.rhv.push_back(clutter ? 0.4f + 0.5f * uniform(random)
                                       : 0.98f + 0.01f * normal(random));
            scan.vel.push_back((clutter ? 0.2f : 8.0f) * normal(random));
            scan.wid.push_back(1.0f + uniform(random));
            scan.ldr.push_back((clutter ? -12.0f : -29.0f) + 3.0f * normal(random));
            scan.pdf.push_back(clutter ? 0.5f + 0.5f * uniform(random) : 0.3f * uniform(random));
            scan.fzl.push_back(freezing);
            scan.ccl.push_back(clutter ? 5.0f : noise ? 3.0f : 0.0f);
            scan.rain.push_back(-1.0f);
        }
    }
    return scan;
}

}  // namespace clutter::test

#endif
