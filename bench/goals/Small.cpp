// A file of 1 KB from open to last field, and what a whole pass over a large one needs of memory.
#include <fstream>
#include <string>

#include "bench/goals/Goals.h"
#include "bench/support/Check.h"
#include "bench/support/CountingAllocator.h"
#include "bench/support/Floors.h"
#include "bench/support/Passes.h"
#include "bench/support/Sqlite.h"

namespace bench {

namespace {

using benchmark::RegisterBenchmark;
using benchmark::State;

constexpr auto Unit = benchmark::kMicrosecond;

const File& getSmall() { return getFile("small"); }

void runFloor(State& state) {
  long bytes = 0;
  for (auto _ : state) bytes = readSmall(getSmall().name);
  check(state, bytes == getSmall().facts.bytes, "not the whole file");
}

void runLibrary(State& state, bool isCached) {
  const File& file = getSmall();
  XelEnv env;
  Found found;
  for (auto _ : state) {
    XelCsvReader reader = openReader(env, file, isCached);
    found = iterate(reader, file);
    reader.end();
  }
  check(state, found.isAllOf(file.facts), "other lines or fields");
  env.end();
}

void runLiteral(State& state) {
  Found found;
  for (auto _ : state) found = iterateLiterally(getSmall());
  check(state, found.isAllOf(getSmall().facts), "other lines or fields");
}

void runLibcsv(State& state) {
  long fields = 0;
  for (auto _ : state) fields = countFieldsByLibcsv(getSmall());
  check(state, fields >= getSmall().facts.fields, "fields are missing");
}

void runSqlite(State& state) {
  long rows = 0;
  for (auto _ : state) {
    Sqlite database(getSmall());
    rows = database.ask("select count(column_4) from csv");
  }
  check(state, rows >= getSmall().facts.lines, "lines are missing");
}

// A figure of the process in bytes, as the kernel says it: VmRSS is its memory, VmHWM the most that it ever was.
long getStatus(const std::string& name) {
  std::ifstream status("/proc/self/status");
  std::string word;
  long kibibytes = 0;
  while (status >> word) {
    if (word == name + ":") status >> kibibytes;
  }
  return kibibytes * 1024;
}

// Bytes that a scan of the directory and an iteration over all tables take: what the environment gave out at most, and by
// how much the process grew. The latter is no more than that only where nothing else ran before.
void runMemory(State& state, const std::string& name) {
  const File& file = getFile(name);
  CountingAllocator allocator;
  XelEnv env(&allocator);
  const long before = getStatus("VmRSS");
  Found found;
  for (auto _ : state) {
    XelCsvReader reader = openReader(env, file, false);
    found = iterate(reader, file);
    reader.end();
  }
  state.counters["peak"] = static_cast<double>(allocator.getPeak());
  state.counters["grown"] = static_cast<double>(getStatus("VmHWM") - before);
  check(state, found.isAllOf(file.facts), "other lines or fields");
  env.end();
}

}  // namespace

void registerSmall() {
  RegisterBenchmark("open/small/library", runLibrary, false)->Unit(Unit);
  RegisterBenchmark("open/small/cached", runLibrary, true)->Unit(Unit);
  RegisterBenchmark("open/small/floor", runFloor)->Unit(Unit);
  RegisterBenchmark("open/small/literal", runLiteral)->Unit(Unit);
  RegisterBenchmark("open/small/libcsv", runLibcsv)->Unit(Unit);
  RegisterBenchmark("open/small/sqlite", runSqlite)->Unit(Unit);
  for (const std::string name : {"multi", "wide", "cliff-long"}) {
    // The theme is the input's alone, so that the driver gives it a process of its own.
    RegisterBenchmark(("memory/" + name + "-alone/iterate").c_str(), runMemory, name)->Iterations(1);
  }
}

}  // namespace bench
