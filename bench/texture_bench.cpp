/*
 * The masked texture of one field, 360 rays x 1,000 gates.
 */
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/literal/classification.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;

struct MaskedField {
    std::vector<float> values, mask, texture;

    MaskedField() : texture(static_cast<std::size_t>(kRays) * kGates) {
        std::mt19937 random(1);
        std::normal_distribution<float> normal(20.0f, 10.0f);
        for (std::size_t i = 0; i < texture.size(); ++i) {
            values.push_back(normal(random));
            mask.push_back(random() % 4 == 0 ? 3.0f : 0.0f);
        }
    }
};

void fast(benchmark::State& state, int wgates, int wrays) {
    MaskedField field;
    CDSP dsp;
    for (auto _ : state) {
        dsp.GetNxNPointStdWithMask(field.values.data(), field.mask.data(), kGates, kRays,
                                   field.texture.data(), wgates, wrays);
        benchmark::DoNotOptimize(field.texture.data());
    }
}

void literalDefinition(benchmark::State& state, int wgates, int wrays) {
    MaskedField field;
    for (auto _ : state) {
        literal::maskedTexture(field.values.data(), field.mask.data(), kGates, kRays,
                               field.texture.data(), wgates, wrays);
        benchmark::DoNotOptimize(field.texture.data());
    }
}

}  // namespace

BENCHMARK_CAPTURE(fast, default, 5, 3)->Name("texture/5x3/fast")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, default, 5, 3)
    ->Name("texture/5x3/literal")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, wide, 9, 5)->Name("texture/9x5/fast")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, wide, 9, 5)
    ->Name("texture/9x5/literal")
    ->Unit(benchmark::kMillisecond);
