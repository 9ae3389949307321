#pragma once

#include <benchmark/benchmark.h>

/// Gives a benchmark kilobytes of 1024 bytes in place of a ratio. `limit` is the most allowed.
void reportKilobytes(benchmark::State& state, double kilobytes, double limit);

/// Runs the benchmarks selected on the command line and prints a line for each, with the counters
/// that reportRatio() sets. Returns the exit code: 0 if each one did its work and stayed below its
/// limit, else 1.
int runBenchmarks(int argc, char** argv);
