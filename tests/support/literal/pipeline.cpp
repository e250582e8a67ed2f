/* Stages of a whole scan by their definitions. */
#include "support/literal/pipeline.h"

#include <cmath>
#include <cstddef>
#include <cstdio>

#include "support/literal/classification.h"
#include "support/literal/corrections.h"
#include "support/literal/toolkit.h"

namespace literal {
namespace {

constexpr double kEarth = 6.378e6;
/* Coefficients of the relations without KDP. */
constexpr double kDefaults[][3] = {{200.0, 1.6, 0.0}, {0.01583, 0.8349, -0.3732}};

double heightOf(double range, double elevation) {
    return std::pow(range * range + kEarth * kEarth + 2 * range * kEarth * std::sin(elevation),
                    0.5) -
           kEarth;
}

/* The result of the ray's correction: nominal coefficients only. */
struct Correction {
    TrialResult trial;
    Values z;
    double rise = 0.0, pia = 0.0;
};

Correction correctRay(AttenuationRay& ray, int algorithm, double leastRise) {
    Correction result;
    result.z = ray.z;
    if (algorithm == -1) {
        return result;
    }
    if (algorithm == 6) {
        ray.dphi = leastRise + 1;
    } else if (!measurePhase(ray)) {
        return result;
    }
    result.rise = ray.dphi;
    if (!(ray.dphi > leastRise)) {
        return result;
    }
    const int methods[] = {-1, -1, -1, 3, 0, 1, 2, -1, -1};
    const int method = algorithm >= 3 && algorithm <= 6 ? methods[algorithm] : -1;
    result.trial = evaluateTrial(ray, 0.073, 3e-05, 0.78, method);
    for (std::size_t g = 0; g < ray.z.size(); ++g) {
        result.pia = result.pia + 2 * result.trial.ah[g] * ray.dr;
        if (!(ray.mask[g] == 0.0)) {
            continue;
        }
        result.z[g] = std::pow(10.0, (10 * std::log10(ray.z[g]) + result.pia) / 10);
    }
    return result;
}

/* Gates of the ray that starts at a cell which are before the melting layer. */
int rainGates(const PolarScan& scan, std::size_t at) {
    for (int g = 0; g < scan.ngates; ++g) {
        const double height =
            heightOf(g * static_cast<double>(scan.gateSize), static_cast<double>(scan.elevation));
        if (height >= static_cast<double>(scan.fzl[at + static_cast<std::size_t>(g)]) - 500.0) {
            return g;
        }
    }
    return scan.ngates - 1;
}

void classify(PolarScan& scan, const PipelineSettings& settings, const std::string& directory) {
    std::vector<double> wide[7];
    const Field* fields[7] = {&scan.zhh, &scan.zdr, &scan.pdp, &scan.rhv,
                              &scan.vel, &scan.ldr, &scan.pdf};
    Scan arguments;
    arguments.nrays = scan.nrays;
    arguments.ngates = scan.ngates;
    for (int i = 0; i < 7; ++i) {
        wide[i].assign(fields[i]->begin(), fields[i]->end());
        arguments.fields[i] = wide[i].data();
    }
    arguments.gateSize = static_cast<double>(scan.gateSize);
    arguments.params[0] = static_cast<double>(scan.radarConstant);
    arguments.params[1] = static_cast<double>(settings.minSnr);
    arguments.params[2] = settings.clutterInputs;
    const std::vector<double> classes = classifyScan(arguments, directory);
    scan.ccl.assign(classes.begin(), classes.end());
    Field flags(scan.cells());
    for (int pass = 0; pass < 2; ++pass) {
        const int window = pass == 0 ? 5 : 10;
        isolatedPixels(scan.ccl.data(), flags.data(), scan.ngates, scan.nrays, window, window,
                       pass + 1);
        for (std::size_t i = 0; i < flags.size(); ++i) {
            if (flags[i] != 0.0f) {
                scan.ccl[i] = 5.0f;
            }
        }
    }
}

}  // namespace

std::string correctAttenuation(PolarScan& scan, const PipelineSettings& settings) {
    const int ngates = scan.ngates, nrays = scan.nrays;
    std::vector<int> correlated, rainy;
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        correlated.push_back(!(0.9 >= static_cast<double>(scan.rhv[i])) ? 1 : 0);
        rainy.push_back(scan.ccl[i] == 0.0f ? 1 : 0);
    }
    const float first = initialPhase(scan.pdp.data(), correlated, ngates, nrays, 10);
    const float second = initialPhase(scan.pdp.data(), rainy, ngates, nrays, 10);
    char printed[200];
    std::snprintf(printed, sizeof printed, "phase0 = %1.2f\nphase0 = %1.2f\n",
                  static_cast<double>(first), static_cast<double>(second));
    for (float& phase : scan.pdp) {
        phase = phase - second;
    }
    if (settings.windows[2][0] * settings.windows[2][1] > 1) {
        smoothPolar(scan.pdp.data(), scan.pdp.data(), scan.ccl.data(), ngates, nrays,
                    settings.windows[2][0], settings.windows[2][1], false);
    }
    for (Field* field : {&scan.dpdp, &scan.acoef, &scan.bcoef, &scan.alpha, &scan.ta, &scan.pdpc,
                         &scan.ah, &scan.kdp}) {
        *field = scan.pdp;
    }
    for (int r = 0; r < nrays; ++r) {
        const std::size_t at = static_cast<std::size_t>(r) * static_cast<std::size_t>(ngates);
        const int nfl = rainGates(scan, at);
        AttenuationRay ray;
        ray.dr = static_cast<double>(scan.gateSize) / 1000;
        for (std::size_t g = 0; g < static_cast<std::size_t>(nfl); ++g) {
            ray.z.push_back(std::pow(10.0, 0.1 * static_cast<double>(scan.zhh[at + g])));
            ray.phidp.push_back(static_cast<double>(scan.pdp[at + g]));
            ray.mask.push_back(static_cast<double>(scan.ccl[at + g]));
        }
        const Correction c = correctRay(ray, settings.attenuation, settings.leastRise);
        for (std::size_t g = 0; g < static_cast<std::size_t>(ngates); ++g) {
            const bool inPath = g < static_cast<std::size_t>(nfl);
            const bool corrected = inPath && !c.trial.ah.empty();
            const double z =
                inPath ? c.z[g] : std::pow(10.0, 0.1 * static_cast<double>(scan.zhh[at + g]));
            const double added = inPath ? 0.0 : c.pia;
            scan.zhh[at + g] = static_cast<float>(10 * std::log10(z)) + static_cast<float>(added);
            scan.ta[at + g] = static_cast<float>(c.pia);
            scan.dpdp[at + g] = static_cast<float>(c.rise);
            scan.acoef[at + g] = corrected ? static_cast<float>(c.trial.a[g]) : 0.0f;
            scan.bcoef[at + g] = corrected ? static_cast<float>(c.trial.b[g]) : 0.0f;
            scan.alpha[at + g] = corrected ? static_cast<float>(c.trial.alpha[g]) : 0.0f;
            scan.pdpc[at + g] = corrected ? static_cast<float>(c.trial.rebuilt[g]) : -30.0f;
            scan.ah[at + g] = corrected ? static_cast<float>(c.trial.ah[g]) : 0.0f;
        }
    }
    return printed;
}

void estimateRain(PolarScan& scan, int relation) {
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        const std::size_t gate = i % static_cast<std::size_t>(scan.ngates);
        const float height = static_cast<float>(
            heightOf(static_cast<double>(gate) * static_cast<double>(scan.gateSize),
                     static_cast<double>(scan.elevation)));
        int chosen = relation;
        if (relation < 0) {
            const bool trust = scan.zhh[i] > 15.0f && scan.zdr[i] > 0.3f && scan.zdr[i] < 5.0f;
            const double base = static_cast<double>(scan.fzl[i]) - 500.0;
            chosen = trust && static_cast<double>(height) <= base ? 1 : 0;
        }
        scan.rain[i] = rainRate(kDefaults[chosen], chosen, scan.zhh[i], scan.zdr[i], 0.0f);
    }
}

std::string process(PolarScan& scan, const PipelineSettings& settings,
                    const std::string& membershipDirectory) {
    classify(scan, settings, membershipDirectory);
    for (float& zdr : scan.zdr) {
        zdr = zdr + settings.zdrBias;
    }
    Field* fields[7] = {&scan.zhh, &scan.zdr, &scan.pdp, &scan.rhv,
                        &scan.vel, &scan.wid, &scan.ldr};
    for (int i = 0; i < 7; ++i) {
        const int* window = settings.windows[i];
        if (window[0] * window[1] <= 1) {
            continue;
        }
        smoothPolar(fields[i]->data(), fields[i]->data(), scan.ccl.data(), scan.ngates, scan.nrays,
                    window[0], window[1], i < 2);
    }
    std::string printed = correctAttenuation(scan, settings);
    estimateRain(scan, settings.relation);
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        if (scan.ccl[i] == 0.0f) {
            continue;
        }
        for (Field* field : fields) {
            (*field)[i] = settings.hidden;
        }
        scan.rain[i] = settings.hidden;
    }
    return printed;
}

}  // namespace literal
