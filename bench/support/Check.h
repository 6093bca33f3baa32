// A benchmark that finds something wrong is no benchmark.
#pragma once

#include <benchmark/benchmark.h>

namespace bench {

// Marks the benchmark as failed when what it found is not right; the driver then fails.
inline void check(benchmark::State& state, bool isRight, const char* what) {
  if (!isRight) state.SkipWithError(what);
}

}  // namespace bench
