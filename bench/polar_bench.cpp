/*
 * A full polarimetric polar data file of 360 rays x 1,000 gates into its eight fields.
 */
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "clutterclassifier/CThuPolDaFor.h"
#include "formats/polar_bytes.h"
#include "literal_polar.h"
#include "support/temp_dir.h"

namespace {

struct ScanFile {
    clutter::test::TempDir dir;
    std::string path = dir.file("scan.dat");

    ScanFile() {
        std::mt19937 random(1);
        clutter::test::writeFile(
            path, clutter::test::randomPolarFile(2213, 10, false, 360, 1000, random).bytes());
    }
};

void fast(benchmark::State& state) {
    ScanFile file;
    CThuPolDaFor polar;
    Cpluvek records[8];
    for (auto _ : state) {
        polar.ReadPolarData(file.path.data(), records, 280, 1);
        benchmark::DoNotOptimize(records[7].data);
    }
}

void literalDefinition(benchmark::State& state) {
    ScanFile file;
    for (auto _ : state) {
        const literal::PolarScan scan = literal::readPolar(file.path, 280);
        benchmark::DoNotOptimize(scan.fields.data());
    }
}

}  // namespace

BENCHMARK(fast)->Name("polar/2213/fast")->Unit(benchmark::kMillisecond);
BENCHMARK(literalDefinition)->Name("polar/2213/literal")->Unit(benchmark::kMillisecond);
