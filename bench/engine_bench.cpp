/*
 * The fuzzy engine alone: the precipitation and clutter classifier on 360,000 gathered gates.
 */
#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <vector>

#include "clutterclassifier/Cradarpro.h"
#include "support/directories.h"
#include "support/literal/classification.h"

namespace {

constexpr int kElements = 360000;
constexpr int kInputs = 5;  // four textures and the correlation
const char* const kTags[kInputs] = {"sZhh", "sZdr", "sPdp", "sRhv", "Rhv"};

struct Elements {
    std::vector<float> inputs[kInputs];
    std::vector<float> classes = std::vector<float>(kElements);
    char directory[1024];

    /* Textures of clutter and of rain, one gate in five clutter. */
    Elements() {
        std::snprintf(directory, sizeof directory, "%s", kMembershipDirectory);
        std::mt19937 random(3);
        std::lognormal_distribution<float> spread(0.0f, 0.5f);
        const float rain[kInputs] = {1.7f, 0.3f, 1.5f, 0.01f, 0.98f};
        const float clutter[kInputs] = {8.0f, 3.5f, 70.0f, 0.2f, 0.8f};
        for (int j = 0; j < kElements; ++j) {
            const float* typical = random() % 5 == 0 ? clutter : rain;
            for (int i = 0; i < kInputs; ++i) {
                inputs[i].push_back(i == 4 ? typical[i] : typical[i] * spread(random));
            }
        }
    }
};

void fast(benchmark::State& state) {
    Elements e;
    Cradarpro radar;
    for (auto _ : state) {
        radar.PrecipitationClutterClassification(
            e.directory, e.inputs[0].data(), e.inputs[1].data(), e.inputs[2].data(),
            e.inputs[3].data(), nullptr, nullptr, nullptr, e.inputs[4].data(), nullptr,
            e.classes.data(), kElements, nullptr, 1);
        benchmark::DoNotOptimize(e.classes.data());
    }
}

void literalDefinition(benchmark::State& state) {
    Elements e;
    for (auto _ : state) {
        literal::RuleBase base;
        base.rules = {std::vector<int>(kInputs, 0), std::vector<int>(kInputs, 1)};
        base.classes = {0.0f, 1.0f};
        std::vector<const float*> inputs;
        for (int i = 0; i < kInputs; ++i) {
            const std::string stem = std::string(e.directory) + "cal_mf_" + kTags[i];
            base.functions.push_back({literal::readFunction(stem + "_clutter.dat"),
                                      literal::readFunction(stem + "_precipi.dat")});
            inputs.push_back(e.inputs[i].data());
        }
        literal::classify(base, inputs, e.classes.data(), kElements);
        benchmark::DoNotOptimize(e.classes.data());
    }
}

}  // namespace

BENCHMARK(fast)->Name("engine/five_tables/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(literalDefinition)->Name("engine/five_tables/literal")->Unit(benchmark::kMillisecond);
