/*
 * The whole entry point on a scan of 360 rays x 1,000 gates, seven inputs.
 */
#include <benchmark/benchmark.h>

#include "clutterclassifier/clutterclassifier.h"
#include "support/directories.h"
#include "support/literal/classification.h"
#include "support/test_scan.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;
constexpr double kEverything = 255.0;
constexpr double kTextures = 15.0;

clutter::test::TestScan scanWith(double inputs, double echoShare) {
    clutter::test::TestScan scan = clutter::test::makeTestScan(kRays, kGates, 7, echoShare);
    scan.params[2] = inputs;
    return scan;
}

void fast(benchmark::State& state, double inputs, double echoShare) {
    clutter::test::TestScan scan = scanWith(inputs, echoShare);
    std::vector<double> classes(static_cast<std::size_t>(kRays) * kGates);
    for (auto _ : state) {
        clutterclassifier(kMembershipDirectory, kRays, kGates, scan.field(0), scan.field(1),
                          scan.field(2), scan.field(3), scan.field(4), scan.field(5), scan.field(6),
                          scan.ranges.data(), scan.azimuths.data(), &scan.elevation, scan.params,
                          classes.data());
        benchmark::DoNotOptimize(classes.data());
    }
    state.counters["gates/s"] = benchmark::Counter(static_cast<double>(classes.size()),
                                                   benchmark::Counter::kIsIterationInvariantRate);
}

void literalDefinition(benchmark::State& state, double inputs, double echoShare) {
    clutter::test::TestScan scan = scanWith(inputs, echoShare);
    const literal::Scan arguments = scan.literal();
    for (auto _ : state) {
        benchmark::DoNotOptimize(literal::classifyScan(arguments, kMembershipDirectory));
    }
}

}  // namespace

BENCHMARK_CAPTURE(fast, all_inputs, kEverything, 0.6)
    ->Name("entry/all_inputs/fast")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, all_inputs, kEverything, 0.6)
    ->Name("entry/all_inputs/literal")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, all_echo, kEverything, 1.0)
    ->Name("entry/all_inputs_no_noise/fast")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, all_echo, kEverything, 1.0)
    ->Name("entry/all_inputs_no_noise/literal")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, textures, kTextures, 0.6)
    ->Name("entry/four_textures/fast")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, textures, kTextures, 0.6)
    ->Name("entry/four_textures/literal")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(fast, noise, kEverything, 0.0)
    ->Name("entry/all_noise/fast")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(literalDefinition, noise, kEverything, 0.0)
    ->Name("entry/all_noise/literal")
    ->Unit(benchmark::kMillisecond);
