/*
 * The attenuation search on a ray of 600 gates (1,000 trials), and on a scan of such rays.
 *
 * The baseline is the whole correction of one ray by the plain definition: draws, a full evaluation
 * of every trial, the final one and the corrected reflectivity.
 */
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/literal/corrections.h"
#include "support/rain_ray.h"

namespace {

constexpr int kGates = 600;
constexpr int kRays = 360;
constexpr int kTrials = 1000;
constexpr double kMinRise = 2.0;

struct Output {
    std::vector<double> ah, zcorr, rebuilt, alpha, a, b;
    explicit Output(std::size_t n) : ah(n), zcorr(n), rebuilt(n), alpha(n), a(n), b(n) {}
};

void correct(Cradarpro& radar, const literal::AttenuationRay& ray, Output& out, int alg) {
    double dphi = 0.0, pia = 0.0;
    const int result =
        radar.Ah_optimal(ray.phidp.data(), ray.z.data(), ray.n(), ray.dr, ray.mask.data(),
                         out.ah.data(), out.zcorr.data(), out.rebuilt.data(), out.alpha.data(),
                         out.a.data(), out.b.data(), dphi, pia, alg, nullptr, kMinRise);
    if (result != 1) {
        std::abort();
    }
    benchmark::DoNotOptimize(pia);
}

void fast(benchmark::State& state, int alg) {
    const literal::AttenuationRay ray = clutter::test::makeRainRay(kGates, 1);
    Output out(kGates);
    Cradarpro radar;
    for (auto _ : state) {
        correct(radar, ray, out, alg);
    }
}

std::vector<double> draw(double min, double max) {
    std::vector<double> values;
    for (int i = 0; i < kTrials; ++i) {
        values.push_back(std::rand() * (max - min) / 2147483647.0 + min);
    }
    return values;
}

void literalDefinition(benchmark::State& state, int alg) {
    const literal::AttenuationRay ray = clutter::test::makeRainRay(kGates, 1);
    Cradarpro radar;
    double nominal[3], range[6];
    int count = 0, method = 0;
    radar.algs_attcor(alg, kTrials, nominal[0], nominal[1], nominal[2], range[0], range[1],
                      range[2], range[3], range[4], range[5], count, method);
    std::vector<double> zcorr(ray.z.size());
    for (auto _ : state) {
        const std::vector<double> a = draw(range[0], range[1]), b = draw(range[2], range[3]),
                                  alpha = draw(range[4], range[5]);
        const std::size_t best =
            static_cast<std::size_t>(literal::bestTrial(ray, alpha, a, b, method));
        const literal::TrialResult result =
            literal::evaluateTrial(ray, alpha[best], a[best], b[best], method);
        double pia = 0.0;
        for (std::size_t g = 0; g < zcorr.size(); ++g) {
            pia += 2.0 * result.ah[g] * ray.dr;
            zcorr[g] = std::pow(10.0, (10.0 * std::log10(ray.z[g]) + pia) / 10.0);
        }
        benchmark::DoNotOptimize(zcorr.data());
    }
}

void scan(benchmark::State& state, int alg) {
    std::vector<literal::AttenuationRay> rays;
    for (unsigned r = 0; r < kRays; ++r) {
        rays.push_back(clutter::test::makeRainRay(kGates, r));
    }
    Output out(kGates);
    Cradarpro radar;
    for (auto _ : state) {
        for (const literal::AttenuationRay& ray : rays) {
            correct(radar, ray, out, alg);
        }
    }
}

}  // namespace

#define SEARCH(alg)                                           \
    BENCHMARK_CAPTURE(fast, alg##alg, alg)                    \
        ->Name("attenuation/ray, algorithm " #alg "/fast")    \
        ->Unit(benchmark::kMillisecond);                      \
    BENCHMARK_CAPTURE(literalDefinition, alg##alg, alg)       \
        ->Name("attenuation/ray, algorithm " #alg "/literal") \
        ->Unit(benchmark::kMillisecond)

SEARCH(0);
SEARCH(1);
SEARCH(2);
SEARCH(8);
BENCHMARK_CAPTURE(scan, 0, 0)->Name("attenuation/scan, algorithm 0")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(scan, 8, 8)->Name("attenuation/scan, algorithm 8")->Unit(benchmark::kMillisecond);
