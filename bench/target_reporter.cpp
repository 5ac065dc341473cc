#include "target_reporter.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

double worstOf(const std::vector<double>& runs) {
    return *std::max_element(runs.begin(), runs.end());
}

class TargetReporter : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override {
        printFigureHead();
        return true;
    }

    void ReportRuns(const std::vector<Run>& runs) override {
        double median = 0;
        double worst = 0;
        for (const Run& run : runs) {
            hasFailed |= run.error_occurred;
            if (run.aggregate_name == "median")
                median = run.GetAdjustedRealTime();
            if (run.aggregate_name == "worst")
                worst = run.GetAdjustedRealTime();
        }
        const auto& counters = runs.front().counters;
        const auto target = counters.find("target_ms");
        const std::string name = runs.front().run_name.function_name;
        printFigure(name.c_str(), median, worst, target == counters.end() ? 0 : target->second.value, "ms");
        const auto worstTarget = counters.find("worst_ms");
        if (worstTarget != counters.end())
            printFigure((name + ", worst").c_str(), worst, worst, worstTarget->second.value, "ms");
    }

    bool hasFailed = false;
};

} // namespace

void asSingleRuns(benchmark::internal::Benchmark* benchmark) {
    benchmark->Iterations(1)
        ->Repetitions(200)
        ->ReportAggregatesOnly()
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond)
        ->ComputeStatistics("worst", worstOf);
}

void printFigureHead() {
    std::printf("%-62s %10s %10s %10s\n", "", "median", "worst", "target");
    std::fflush(stdout);
}

void printFigure(const char* what, double median, double worst, double target, const char* unit) {
    const char* verdict = target <= 0 ? "" : median <= target ? "ok" : "MISSED";
    std::printf("%-62s %7.3f %s %7.3f %s %7.2f %s  %s\n", what, median, unit, worst, unit, target, unit,
                verdict);
    std::fflush(stdout);
}

int runAgainstTargets(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    TargetReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.hasFailed ? 1 : 0;
}
