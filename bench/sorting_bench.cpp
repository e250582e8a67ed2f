/*
 * The index-keeping sort: 20,000 distinct values, and as many in steps of half a decibel.
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "clutterclassifier/CDSP.h"
#include "support/literal/toolkit.h"

namespace {

constexpr int kValues = 20000;

std::vector<float> distinctValues() {
    std::vector<float> values;
    for (int i = 0; i < kValues; ++i) {
        values.push_back(static_cast<float>(i) * 0.37f - 3000.0f);
    }
    std::shuffle(values.begin(), values.end(), std::mt19937(1));
    return values;
}

std::vector<float> steppedValues() {
    std::mt19937 random(2);
    std::normal_distribution<float> normal(20.0f, 10.0f);
    std::vector<float> values;
    for (int i = 0; i < kValues; ++i) {
        values.push_back(std::round(2.0f * normal(random)) / 2.0f);
    }
    return values;
}

void fast(benchmark::State& state, std::vector<float> (*make)()) {
    std::vector<float> in = make(), out(in.size());
    std::vector<int> index(in.size());
    CDSP dsp;
    for (auto _ : state) {
        dsp.Sort(in.data(), out.data(), index.data(), kValues);
        benchmark::DoNotOptimize(index.data());
    }
}

void literalDefinition(benchmark::State& state, std::vector<float> (*make)()) {
    std::vector<float> in = make(), out(in.size());
    std::vector<int> index(in.size());
    for (auto _ : state) {
        literal::exchangeSort(in.data(), out.data(), index.data(), kValues);
        benchmark::DoNotOptimize(index.data());
    }
}

}  // namespace

#define SORT_BENCH(label, make)                       \
    BENCHMARK_CAPTURE(fast, label, make)              \
        ->Name("sort/" #label "/fast")                \
        ->Unit(benchmark::kMillisecond);              \
    BENCHMARK_CAPTURE(literalDefinition, label, make) \
        ->Name("sort/" #label "/literal")             \
        ->Unit(benchmark::kMillisecond)

SORT_BENCH(distinct, distinctValues);
SORT_BENCH(stepped, steppedValues);
