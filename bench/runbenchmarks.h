#pragma once

/// Runs the registered benchmarks that the command line asks for and prints a line for each: the
/// counters that reportRatio() sets. Gives the exit code of the program: 0 if every one did its
/// work and kept below its limit, else 1.
int runBenchmarks(int argc, char** argv);
