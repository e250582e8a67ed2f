/*
 * The whole pipeline except the two plain conversions, on a scan of 360 rays x 1,000 gates: filling
 * a context, classification to blanking, nominal attenuation solution. And its rain rates alone.
 */
#include <benchmark/benchmark.h>

#include <cstdio>

#include "clutterclassifier/Crres.h"
#include "clutterclassifier/classifier.hpp"
#include "support/directories.h"
#include "support/literal/pipeline.h"
#include "support/scan_context.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;
constexpr int kStages = 255 & ~(32 | 64);
constexpr int kAlgorithm = 4;
constexpr int kBetterOfTwo = -1;

void fast(benchmark::State& state, int stages) {
    const literal::PolarScan scan = clutter::test::makeRainScan(kRays, kGates, 3);
    const clutter::MessageSink silence;
    for (auto _ : state) {
        Crres context;
        clutter::test::fillContext(context, scan);
        std::snprintf(context.mfdir, sizeof context.mfdir, "%s", kMembershipDirectory);
        context.attenuationalg = kAlgorithm;
        benchmark::DoNotOptimize(context.RadarDataProcessing(stages));
    }
}

void literalDefinition(benchmark::State& state) {
    const literal::PolarScan scan = clutter::test::makeRainScan(kRays, kGates, 3);
    literal::PipelineSettings settings;
    settings.attenuation = kAlgorithm;
    for (auto _ : state) {
        literal::PolarScan copy = scan;
        benchmark::DoNotOptimize(literal::process(copy, settings, kMembershipDirectory));
    }
}

void rainRates(benchmark::State& state) {
    Crres context;
    clutter::test::fillContext(context, clutter::test::makeRainScan(kRays, kGates, 3));
    for (auto _ : state) {
        context.PrecipitationEstimation(kBetterOfTwo);
        benchmark::DoNotOptimize(context.rain.data);
    }
}

void literalRainRates(benchmark::State& state) {
    literal::PolarScan scan = clutter::test::makeRainScan(kRays, kGates, 3);
    for (auto _ : state) {
        literal::estimateRain(scan, kBetterOfTwo);
        benchmark::DoNotOptimize(scan.rain.data());
    }
}

}  // namespace

BENCHMARK(rainRates)->Name("rain rates/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(literalRainRates)->Name("rain rates/literal")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, whole, kStages)->Name("pipeline/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(literalDefinition)->Name("pipeline/literal")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, none, 0)->Name("pipeline/filling only")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, c1, 1)->Name("pipeline/classification")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, c4, 4)->Name("pipeline/filtering")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, c8, 8)->Name("pipeline/attenuation")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, c16, 16)->Name("pipeline/rainfall")->Unit(benchmark::kMillisecond);
