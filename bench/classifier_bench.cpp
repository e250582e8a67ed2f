/*
 * The handle against the entry point: 360 rays x 1,000 gates, seven fields, eight inputs, with
 * echoes on 60 % and on 95 % of the gates. All variants take turns in one loop, so that the ratios
 * of their medians mean something on a busy machine.
 */
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

#include "clutterclassifier/classifier.hpp"
#include "clutterclassifier/clutterclassifier.h"
#include "support/directories.h"
#include "support/test_scan.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;
constexpr std::size_t kCells = std::size_t{kRays} * kGates;

/* One scan, and everything that may be written. */
struct Bench {
    explicit Bench(double echoShare)
        : scan(clutter::test::makeTestScan(kRays, kGates, 7, echoShare)) {}

    clutter::test::TestScan scan;
    clutter::Classifier classifier{kMembershipDirectory, CLUTTER_ALL_INPUTS & ~CLUTTER_WIDTH};
    std::vector<double> output = std::vector<double>(kCells);
    std::vector<std::uint8_t> classes = std::vector<std::uint8_t>(kCells);
    std::vector<float> margin = std::vector<float>(kCells);
    std::vector<float> probability = std::vector<float>(kCells);

    void entryPoint() {
        clutterclassifier(kMembershipDirectory, kRays, kGates, scan.field(0), scan.field(1),
                          scan.field(2), scan.field(3), scan.field(4), scan.field(5), scan.field(6),
                          scan.ranges.data(), scan.azimuths.data(), &scan.elevation, scan.params,
                          output.data());
    }

    void handle(bool certainty, int gates, int rays) {
        clutter_scan given = {};
        given.size = sizeof given;
        given.rays = kRays;
        given.gates = kGates;
        clutter_field* const fields[] = {&given.zhh,       &given.zdr,      &given.phidp,
                                         &given.rhohv,     &given.velocity, &given.ldr,
                                         &given.likelihood};
        for (int i = 0; i < 7; ++i) {
            *fields[i] = {scan.field(i), 0, CLUTTER_DOUBLE};
        }
        given.gate_spacing_m = 250.0;
        given.radar_constant_db = scan.params[0];
        given.min_snr_db = scan.params[1];
        clutter_options options = {};
        options.size = sizeof options;
        options.neighbourhood_gates = gates;
        options.neighbourhood_rays = rays;
        clutter_result result = {};
        result.size = sizeof result;
        result.classes = classes.data();
        if (certainty) {
            result.margin = margin.data();
            result.probability = probability.data();
        }
        classifier.classify(given, options, result);
    }
};

/* Processor time of this thread: other programs do not count. */
double processorMs() {
    timespec now = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return 1e3 * static_cast<double>(now.tv_sec) + 1e-6 * static_cast<double>(now.tv_nsec);
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

void handleAgainstEntryPoint(benchmark::State& state) {
    Bench bench(0.01 * static_cast<double>(state.range(0)));
    const std::function<void()> variants[] = {
        [&] { bench.entryPoint(); },
        [&] { bench.handle(false, 0, 0); },
        [&] { bench.handle(true, 0, 0); },
        [&] { bench.handle(true, 5, 3); },
    };
    std::vector<double> times[4];
    for (auto _ : state) {
        for (std::size_t v = 0; v < 4; ++v) {
            const double begin = processorMs();
            variants[v]();
            times[v].push_back(processorMs() - begin);
        }
    }
    double medians[4];
    std::transform(times, times + 4, medians, median);
    state.counters["entry_ms"] = medians[0];
    state.counters["classes/entry"] = medians[1] / medians[0];
    state.counters["certainty/classes"] = medians[2] / medians[1];
    state.counters["neighbourhood/certainty"] = medians[3] / medians[2];
}

}  // namespace

BENCHMARK(handleAgainstEntryPoint)
    ->Name("handle")
    ->ArgName("echo_percent")
    ->Arg(60)
    ->Arg(95)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(3.0);
