#pragma once

#include <benchmark/benchmark.h>

// One table for all figures: what, median, worst, target, verdict. A benchmark names its target in
// milliseconds in the counter "target_ms" (and, where the worst run counts too, "worst_ms").

/// 200 single runs, so that the median and the worst of real single operations show.
void asSingleRuns(benchmark::internal::Benchmark* benchmark);

/// Runs all benchmarks of the program and prints the table. The result is a process's exit status: 0 unless a
/// benchmark itself failed; a missed target is told, not punished.
int runAgainstTargets(int argc, char** argv);

/// Prints one row, for figures that Google Benchmark cannot take. `unit` such as "ms".
void printFigure(const char* what, double median, double worst, double target, const char* unit);
void printFigureHead();
