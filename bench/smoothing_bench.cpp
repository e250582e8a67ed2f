/*
 * The masked mean of one field, 360 rays x 1,000 gates, a quarter of it masked; in place, as the
 * pipeline does it.
 */
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/literal/toolkit.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;

struct NoisyField {
    std::vector<float> values, mask;

    NoisyField() {
        std::mt19937 random(1);
        std::normal_distribution<float> normal(20.0f, 10.0f);
        for (int i = 0; i < kRays * kGates; ++i) {
            values.push_back(normal(random));
            mask.push_back(random() % 4 == 0 ? 3.0f : 0.0f);
        }
    }
};

/* Starts each round from the same values: a field smoothed a thousand times over is flat. */
template <class Smoother>
void run(benchmark::State& state, Smoother smooth) {
    NoisyField field;
    std::vector<float> work(field.values.size());
    for (auto _ : state) {
        state.PauseTiming();
        work = field.values;
        state.ResumeTiming();
        smooth(work.data(), field.mask.data());
        benchmark::DoNotOptimize(work.data());
    }
}

void fast(benchmark::State& state, int wgates, int wrays, int logmode) {
    CDSP dsp;
    run(state, [=, &dsp](float* field, float* mask) {
        dsp.Conv2DPPI(field, field, mask, kGates, kRays, wgates, wrays, logmode);
    });
}

void literalDefinition(benchmark::State& state, int wgates, int wrays, int logmode) {
    run(state, [=](float* field, float* mask) {
        literal::smoothPolar(field, field, mask, kGates, kRays, wgates, wrays, logmode != 0);
    });
}

}  // namespace

#define SMOOTHING_BENCH(label, wgates, wrays, logmode)                  \
    BENCHMARK_CAPTURE(fast, label, wgates, wrays, logmode)              \
        ->Name("smoothing/" #label "/fast")                             \
        ->Unit(benchmark::kMillisecond);                                \
    BENCHMARK_CAPTURE(literalDefinition, label, wgates, wrays, logmode) \
        ->Name("smoothing/" #label "/literal")                          \
        ->Unit(benchmark::kMillisecond)

SMOOTHING_BENCH(decibels_7x1, 7, 1, 1);
SMOOTHING_BENCH(decibels_5x3, 5, 3, 1);
SMOOTHING_BENCH(linear_17x1, 17, 1, 0);
SMOOTHING_BENCH(linear_5x3, 5, 3, 0);
