// Benchmarks of the library: xelcsv-bench FOLDER [options of Google Benchmark]. FOLDER holds the generated files.
#include <benchmark/benchmark.h>

#include <iostream>

#include "bench/goals/Goals.h"
#include "bench/support/Files.h"

int main(int count, char** arguments) {
  benchmark::Initialize(&count, arguments);
  if (count != 2) {
    std::cerr << "usage: xelcsv-bench FOLDER [--benchmark_...]\n";
    return 2;
  }
  bench::setFolder(arguments[1]);
  bench::registerPasses();
  bench::registerFields();
  bench::registerSmall();
  bench::registerIndexes();
  bench::registerLookups();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
