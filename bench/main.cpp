/*
 * main.cpp - runs the benches and closes with the ratios that the project promises: each fast path
 * against the plain loop of the same definition, measured in the same run.
 */
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

/* Prints the usual table and remembers each bench's time. */
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (!run.error_occurred) {
                times_[run.benchmark_name()] = run.GetAdjustedRealTime();
            }
        }
    }

    /* A bench named X/literal is the baseline of X/fast. */
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nratio to the literal definition, same run:\n");
        for (const auto& [name, time] : times_) {
            const std::size_t at = name.find("/literal");
            if (at == std::string::npos) {
                continue;
            }
            const auto fast = times_.find(name.substr(0, at) + "/fast");
            if (fast == times_.end()) {
                continue;
            }
            std::printf("  %-40s %6.1f x  (%.2f ms instead of %.2f ms)\n",
                        name.substr(0, at).c_str(), time / fast->second, fast->second, time);
        }
    }

  private:
    std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
