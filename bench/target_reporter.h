#pragma once

#include <benchmark/benchmark.h>

// One table for all figures: what, median, worst, target, verdict. A benchmark sets its target in
// milliseconds in the counter "target_ms" (and, where the worst run has a target too, "worst_ms").

/// 200 repetitions of one iteration, so that median and worst are those of single operations.
void asSingleRuns(benchmark::internal::Benchmark* benchmark);

/// Runs all benchmarks of the program and prints the table. Returns the exit status: 0 unless a benchmark
/// itself failed; a missed target is only reported.
int runAgainstTargets(int argc, char** argv);

/// Prints one row, for figures that Google Benchmark cannot measure. `unit` such as "ms".
void printFigure(const char* what, double median, double worst, double target, const char* unit);
void printFigureHead();
