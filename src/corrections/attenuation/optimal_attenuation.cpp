/*
 * Attenuation correction of one ray: the table of algorithms, the phase rise, the search and the
 * corrected reflectivity.
 */
#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "corrections/attenuation/attenuation_search.h"
#include "dsp/search/random_fill.h"

using namespace clutter::corrections;

namespace {

constexpr int kDisabled = -1;
constexpr int kForwardNominal = 6;  // needs no measured phase
constexpr int kTrials = 1000;
constexpr int kRunGates = 20;  // in a row, for the phase at either end
constexpr double kSelectedAlphaMax = 0.3;

struct Range {
    double min;
    double max;
};

constexpr Range kNominalAlpha{kNominal.alpha, kNominal.alpha};
constexpr Range kNominalA{kNominal.a, kNominal.a};
constexpr Range kNominalB{kNominal.b, kNominal.b};
constexpr Range kSearchedAlpha{0.02, 0.1};
constexpr Range kSearchedA{1e-05, 9e-05};
constexpr Range kSearchedB{0.65, 0.85};

struct Algorithm {
    int number;
    Range a, b, alpha;
    bool searches;
    Method method;
};

constexpr Algorithm kAlgorithms[] = {
    {0, kNominalA, kNominalB, kSearchedAlpha, true, kProfile},
    {1, kSearchedA, kSearchedB, kSearchedAlpha, true, kFinalValue},
    {2, kSearchedA, kSearchedB, kSearchedAlpha, true, kForward},
    {3, kNominalA, kNominalB, kNominalAlpha, false, kPhaseSlope},
    {4, kNominalA, kNominalB, kNominalAlpha, false, kProfile},
    {5, kNominalA, kNominalB, kNominalAlpha, false, kFinalValue},
    {kForwardNominal, kNominalA, kNominalB, kNominalAlpha, false, kForward},
    {8, kNominalA, kSearchedB, kSearchedAlpha, true, kProfile},
};

const Algorithm* findAlgorithm(int number) {
    for (const Algorithm& algorithm : kAlgorithms) {
        if (algorithm.number == number) {
            return &algorithm;
        }
    }
    return nullptr;
}

double meanOfRun(const double* values) {
    double sum = 0.0;
    for (int k = 0; k < kRunGates; ++k) {
        sum += values[k];
    }
    return sum / kRunGates;
}

/* Mean phase of the first 20 precipitation gates in a row that start before gate n - 20. */
std::optional<double> phaseAtStart(const double* phidp, const double* mask, int n) {
    int run = 0;
    for (int g = 0; g < n - 1; ++g) {
        run = mask[g] == 0.0 ? run + 1 : 0;
        if (run == kRunGates) {
            return meanOfRun(phidp + g + 1 - kRunGates);
        }
    }
    return std::nullopt;
}

/* The same for the last such gates that start at gate 2 or later. */
std::optional<double> phaseAtEnd(const double* phidp, const double* mask, int n) {
    int run = 0;
    for (int g = n - 1; g >= 2; --g) {
        run = mask[g] == 0.0 ? run + 1 : 0;
        if (run == kRunGates) {
            return meanOfRun(phidp + g);
        }
    }
    return std::nullopt;
}

/* Draws the trials of an algorithm; an unknown one has only the nominal coefficients. The order of
 * the draws is fixed: a, b, alpha. */
Trials drawTrials(const Algorithm* algorithm, bool selected) {
    const bool searches = algorithm != nullptr && algorithm->searches;
    const std::size_t count = searches ? kTrials : 1;
    Trials trials{std::vector<double>(count), std::vector<double>(count),
                  std::vector<double>(count)};
    Range alpha = algorithm ? algorithm->alpha : kNominalAlpha;
    if (selected && searches) {
        alpha.max = kSelectedAlphaMax;
    }
    const auto draw = [](std::vector<double>& values, Range range) {
        clutter::dsp::fillUniform(values.data(), static_cast<int>(values.size()), range.min,
                                  range.max);
    };
    draw(trials.a, algorithm ? algorithm->a : kNominalA);
    draw(trials.b, algorithm ? algorithm->b : kNominalB);
    draw(trials.alpha, alpha);
    return trials;
}

/* Raises precipitation gates by the two-way attenuation of their path. Returns that of the whole
 * ray. zcorr may be ray.z. */
double correctReflectivity(const Ray& ray, const double* ah, double* zcorr) {
    double pia = 0.0;
    for (int g = 0; g < ray.n; ++g) {
        pia += 2.0 * ah[g] * ray.dr;
        if (ray.isRain(g)) {
            zcorr[g] = std::pow(10.0, (10.0 * std::log10(ray.z[g]) + pia) / 10.0);
        }
    }
    return pia;
}

}  // namespace

int Cradarpro::algs_attcor(int alg, int ntrials, double& alpha, double& a, double& b, double& amin,
                           double& amax, double& bmin, double& bmax, double& alphamin,
                           double& alphamax, int& count, int& method) {
    alpha = kNominal.alpha;
    a = kNominal.a;
    b = kNominal.b;
    method = kNoMethod;
    const Algorithm* algorithm = findAlgorithm(alg);
    if (algorithm == nullptr) {
        return method;
    }
    amin = algorithm->a.min;
    amax = algorithm->a.max;
    bmin = algorithm->b.min;
    bmax = algorithm->b.max;
    alphamin = algorithm->alpha.min;
    alphamax = algorithm->alpha.max;
    count = algorithm->searches ? ntrials : 1;
    method = algorithm->method;
    return method;
}

int Cradarpro::Ah_optimal(const double* phidp, const double* z, int n, double dr,
                          const double* mask, double* ah, double* zcorr, double* phidpRebuilt,
                          double* alpha, double* a, double* b, double& dphi, double& pia, int alg,
                          const double* select, double dphiMin) {
    if (alg == kDisabled) {
        return -1;
    }
    double phi0 = 0.0;
    if (alg == kForwardNominal) {
        dphi = dphiMin + 1.0;
    } else {
        const auto start = phaseAtStart(phidp, mask, n);
        const auto end = start ? phaseAtEnd(phidp, mask, n) : std::nullopt;
        if (!end) {
            return 0;
        }
        phi0 = *start;
        dphi = *end - phi0;
    }
    if (!(dphi > dphiMin)) {
        return 0;
    }

    const Algorithm* algorithm = findAlgorithm(alg);
    const int method = algorithm ? algorithm->method : kNoMethod;
    const Search search{{z, mask, phidp, std::max(n, 0), dr, dphi}, method, phi0, select};
    const Trials trials = drawTrials(algorithm, select != nullptr);
    const int best = findBestTrial(search, trials);
    evaluateTrial(search, trials.at(best), {alpha, a, b, ah, phidpRebuilt}, ahConstraintSum);
    pia = correctReflectivity(search.ray, ah, zcorr);
    return 1;
}
