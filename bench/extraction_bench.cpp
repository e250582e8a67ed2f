/*
 * Values of a scan of 360 rays x 1,000 gates at many points, and moving points off invalid gates.
 */
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "clutterclassifier/Cpluvek.h"
#include "support/literal/geometry.h"
#include "support/polar_record.h"

namespace {

constexpr int kRays = 360;
constexpr int kGates = 1000;
constexpr int kPoints = 100000;
constexpr float kInvalid = -32.0f;

struct Workload {
    Cpluvek record;
    std::vector<float> ranges, azimuths, out, outazimuths;

    Workload() : out(kPoints), outazimuths(kPoints) {
        clutter::test::fillPolar(record, kRays, kGates, 100.0f);
        std::mt19937 random(1);
        std::uniform_real_distribution<float> range(0.0f, 100000.0f), azimuth(0.0f, 360.0f);
        // A scan begins anywhere: rays in order, but from the middle of the circle.
        for (int r = 0; r < kRays; ++r) {
            record.angles[1 + r] = static_cast<float>((r + 182) % kRays) * 0.0174532925f;
        }
        for (int i = 0; i < kRays * kGates; ++i) {
            if (random() % 4 == 0) {
                record.data[i] = kInvalid;
            }
        }
        for (int i = 0; i < kPoints; ++i) {
            ranges.push_back(range(random));
            azimuths.push_back(azimuth(random));
        }
    }
};

void extractFast(benchmark::State& state) {
    Workload w;
    for (auto _ : state) {
        w.record.ExtractDataRA(w.ranges.data(), w.azimuths.data(), w.out.data(), kPoints);
        benchmark::DoNotOptimize(w.out.data());
    }
}

void extractLiteral(benchmark::State& state) {
    Workload w;
    for (auto _ : state) {
        literal::extractRangeAzimuth(w.record, w.ranges.data(), w.azimuths.data(), w.out.data(),
                                     kPoints);
        benchmark::DoNotOptimize(w.out.data());
    }
}

void findValidFast(benchmark::State& state) {
    Workload w;
    for (auto _ : state) {
        w.record.FindValidDataRA(w.ranges.data(), w.azimuths.data(), kInvalid, kPoints,
                                 w.out.data(), w.outazimuths.data(), 5, 5);
        benchmark::DoNotOptimize(w.out.data());
    }
}

void findValidLiteral(benchmark::State& state) {
    Workload w;
    for (auto _ : state) {
        literal::findValid(w.record, w.ranges.data(), w.azimuths.data(), kInvalid, kPoints,
                           w.out.data(), w.outazimuths.data(), 5, 5);
        benchmark::DoNotOptimize(w.out.data());
    }
}

}  // namespace

BENCHMARK(extractFast)->Name("extraction/100000_points/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(extractLiteral)->Name("extraction/100000_points/literal")->Unit(benchmark::kMillisecond);
BENCHMARK(findValidFast)->Name("find_valid/100000_points/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(findValidLiteral)
    ->Name("find_valid/100000_points/literal")
    ->Unit(benchmark::kMillisecond);
