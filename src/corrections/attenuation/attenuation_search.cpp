/*
 * The search: screening where its bounds hold, then the exact costs of the remaining trials.
 */
#include "corrections/attenuation/attenuation_search.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "corrections/attenuation/trial_screen.h"

namespace clutter::corrections {
namespace {

/* Exact costs of trials, computed in its own arrays. */
class ExactCosts {
  public:
    explicit ExactCosts(const Search& search)
        : search_(search), arrays_(5 * static_cast<std::size_t>(search.ray.n)) {}

    double of(const Coefficients& trial) {
        const std::size_t n = static_cast<std::size_t>(search_.ray.n);
        double* at = arrays_.data();
        const Evaluation out{at, at + n, at + 2 * n, at + 3 * n, at + 4 * n};
        double unused = 0.0;
        evaluateTrial(search_, trial, out, unused);
        double sum = 0.0;
        long long count = 0;
        for (int g = 0; g < search_.ray.n; ++g) {
            if (!search_.ray.isRain(g)) {
                continue;
            }
            sum += std::fabs(out.rebuilt[g] - search_.ray.phidp[g]);
            ++count;
        }
        return sum / static_cast<double>(count);
    }

  private:
    const Search& search_;
    std::vector<double> arrays_;
};

/* The first of the candidates (ascending) whose exact cost is the smallest. */
int pickBest(const Search& search, const Trials& trials, const std::vector<int>& candidates) {
    if (candidates.size() == 1) {
        return candidates[0];
    }
    ExactCosts costs(search);
    int best = candidates[0];
    double bestCost = costs.of(trials.at(best));
    if (best == 0 && std::isnan(bestCost)) {
        return 0;  // no cost is below NaN
    }
    for (std::size_t k = 1; k < candidates.size(); ++k) {
        const double cost = costs.of(trials.at(candidates[k]));
        if (cost < bestCost || std::isnan(bestCost)) {
            best = candidates[k];
            bestCost = cost;
        }
    }
    return best;
}

}  // namespace

void evaluateTrial(const Search& search, const Coefficients& trial, const Evaluation& out,
                   double& constraintSum) {
    const Ray& ray = search.ray;
    for (int g = 0; g < ray.n; ++g) {
        const Coefficients& own = search.isTried(g) ? trial : kNominal;
        out.alpha[g] = own.alpha;
        out.a[g] = own.a;
        out.b[g] = own.b;
    }
    computeAttenuation(ray, {out.alpha, out.a, out.b}, search.method, out.ah, constraintSum);
    double sum = 0.0;
    for (int g = 0; g < ray.n; ++g) {
        sum += 2.0 * out.ah[g] * ray.dr / out.alpha[g];
        out.rebuilt[g] = sum + search.phi0;
    }
}

int findBestTrial(const Search& search, const Trials& trials) {
    if (trials.count() == 1 || everyCostIsUndefined(search)) {
        return 0;
    }
    if (canScreen(search, trials)) {
        return pickBest(search, trials, screenTrials(search, trials));
    }
    std::vector<int> all(trials.alpha.size());
    std::iota(all.begin(), all.end(), 0);
    return pickBest(search, trials, all);
}

}  // namespace clutter::corrections
